#include "commandline.h"

#include <QCoreApplication>

#include <cstdio>
#include <memory>

namespace
{
void write(FILE *stream, const QString &text)
{
    fputs(text.toLocal8Bit().constData(), stream);
    fflush(stream);
}

// The toolkit's own options, read by QGuiApplication and QApplication.
const char *const ToolkitOptionsWithValue[] = { "platform", "platformpluginpath", "platformtheme", "plugin",
    "qwindowgeometry", "qwindowicon", "qwindowtitle", "session", "display", "style", "stylesheet" };
const char *const ToolkitFlags[] = { "reverse", "widgetcount" };
}

CommandLine::CommandLine(const QString &name, const QString &description)
    : m_name(name)
    , m_help(m_parser.addHelpOption())
    , m_version(m_parser.addVersionOption())
{
    QCoreApplication::setApplicationName(name);
    QCoreApplication::setApplicationVersion(QStringLiteral(VARDA_VERSION));
    m_parser.setApplicationDescription(description);
}

void CommandLine::addOption(QCommandLineOption option)
{
    const QStringList defaults = option.defaultValues();
    if (!defaults.isEmpty() && !option.description().contains("default", Qt::CaseInsensitive)) {
        QString text = option.description();
        const bool sentence = text.endsWith('.');
        if (sentence)
            text.chop(1);
        option.setDescription(text + " (default: " + defaults.join(", ") + ")" + (sentence ? "." : ""));
    }
    m_parser.addOption(option);
}

void CommandLine::addPositionalArgument(
    const QString &name, const QString &description, const QString &syntax)
{
    m_parser.addPositionalArgument(name, description, syntax);
    m_takesPositional = true;
}

void CommandLine::acceptToolkitOptions()
{
    // "-platform offscreen" is one option, not the letters p, l, a, ...
    m_parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const auto hidden = [this](const QString &name, const QString &valueName) {
        QCommandLineOption option(name, QString(), valueName);
        option.setFlags(QCommandLineOption::HiddenFromHelp);
        m_parser.addOption(option);
    };
    QStringList names;
    for (const char *name : ToolkitOptionsWithValue) {
        hidden(name, "value");
        names << QString("-%1 <value>").arg(name);
    }
    for (const char *name : ToolkitFlags) {
        hidden(name, QString());
        names << QString("-") + name;
    }
    m_toolkitHelp = "\nQt options (read by the toolkit, see the Qt documentation of QGuiApplication and "
                    "QApplication):\n  "
        + names.join("\n  ") + "\n";
}

bool CommandLine::parse(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    return parse(arguments);
}

bool CommandLine::parse(const QStringList &arguments)
{
    if (!m_parser.parse(arguments)) {
        QString error = m_parser.errorText();
        if (error.endsWith('.'))
            error.chop(1);
        refuse(error);
        return false;
    }
    if (m_parser.isSet(m_help) || m_parser.isSet("help-all")) {
        write(stdout, helpText() + (m_parser.isSet("help-all") ? m_toolkitHelp : QString()));
        m_exitCode = Success;
        return false;
    }
    if (m_parser.isSet(m_version)) {
        write(stdout, m_name + ' ' + QCoreApplication::applicationVersion() + '\n');
        m_exitCode = Success;
        return false;
    }
    if (!m_takesPositional && !m_parser.positionalArguments().isEmpty()) {
        refuse("unexpected argument '" + m_parser.positionalArguments().constFirst() + "'");
        return false;
    }
    return readGroups();
}

bool CommandLine::readGroups()
{
    QString error;
    for (OptionGroup *group : qAsConst(m_groups)) {
        if (!group->read(m_parser, &error)) {
            refuse(error);
            return false;
        }
    }
    return true;
}

void CommandLine::addGroup(OptionGroup *group)
{
    group->addTo(&m_parser);
    m_groups.append(group);
}

int CommandLine::exitCode() const
{
    return m_exitCode;
}

bool CommandLine::isSet(const QCommandLineOption &option) const
{
    return m_parser.isSet(option);
}

QString CommandLine::value(const QCommandLineOption &option) const
{
    return m_parser.value(option);
}

QStringList CommandLine::values(const QCommandLineOption &option) const
{
    return m_parser.values(option);
}

QCommandLineParser &CommandLine::parser()
{
    return m_parser;
}

QStringList CommandLine::positionalArguments() const
{
    return m_parser.positionalArguments();
}

int CommandLine::refuse(QString message)
{
    message.replace('\n', ' ');
    write(stderr, m_name + ": " + message + " (see --help)\n");
    m_exitCode = UsageError;
    return m_exitCode;
}

QString CommandLine::helpText() const
{
    // The parser names the program in its usage line after the running
    // application's first argument: before the program has its application
    // object, a short-lived one carries the bare name (not the path the
    // program was started by, which would end up in the manual page).
    QByteArray name = m_name.toLocal8Bit();
    int argc = 1;
    char *argv[] = { name.data(), nullptr };
    std::unique_ptr<QCoreApplication> named;
    if (!QCoreApplication::instance())
        named = std::make_unique<QCoreApplication>(argc, argv);
    return m_parser.helpText();
}
