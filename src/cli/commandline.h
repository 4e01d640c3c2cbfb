#ifndef COMMANDLINE_H
#define COMMANDLINE_H

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QString>
#include <QStringList>
#include <QVector>

#include "optiongroup.h"

// The command line of every program of the toolbox: --help (every option
// with its default), --version (the project's version), and one rule for
// mistakes: an unknown option, a missing or bad value or a stray argument is
// refused with one line on standard error and exit code 2.
//
// It parses before the application object exists, so that --help and
// --version answer without a display:
//
//     CommandLine cli("varda-toolbox", "What the program does.");
//     const QCommandLineOption rate("rate", "Packets a second.", "count", "10");
//     cli.addOption(rate);
//     if (!cli.parse(argc, argv))
//         return cli.exitCode();
//     if (cli.value(rate).toInt() < 1)
//         return cli.refuse("the rate is at least 1");
//     QApplication app(argc, argv);
class CommandLine
{
public:
    enum ExitCode { Success = 0, UsageError = 2 };

    // Sets the application's name and version as well.
    CommandLine(const QString &name, const QString &description);

    // An option's default values, if any, are added to its description
    // unless it speaks of its default itself.
    void addOption(QCommandLineOption option);
    void addPositionalArgument(const QString &name, const QString &description, const QString &syntax = {});
    // Lets a window program take the toolkit's own options (-platform,
    // -style, ...), which the application object reads from argv itself.
    void acceptToolkitOptions();

    // True when the program goes on. False when it has answered --help or
    // --version (exitCode() is Success) or refused the command line
    // (exitCode() is UsageError); the program then returns exitCode().
    bool parse(int argc, char **argv);
    bool parse(const QStringList &arguments);
    int exitCode() const;

    bool isSet(const QCommandLineOption &option) const;
    QString value(const QCommandLineOption &option) const;
    QStringList values(const QCommandLineOption &option) const;
    QStringList positionalArguments() const;
    // The parser itself, for what addGroup() does not cover. Positional
    // arguments go through addPositionalArgument() all the same, or they are
    // refused as stray.
    QCommandLineParser &parser();
    // Declares the group's options now and reads them in parse(), in the
    // order the groups were added; a wrong value is refused as above. The
    // group must outlive parse().
    void addGroup(OptionGroup *group);

    // Writes "<name>: <message> (see --help)" as one line on standard error
    // and returns UsageError, for values the program itself finds wrong.
    int refuse(QString message);

    QString helpText() const;

private:
    bool readGroups();

    QString m_name;
    QCommandLineParser m_parser;
    QCommandLineOption m_help;
    QCommandLineOption m_version;
    QString m_toolkitHelp; // what --help-all adds
    QVector<OptionGroup *> m_groups;
    bool m_takesPositional = false;
    int m_exitCode = Success;
};

#endif
