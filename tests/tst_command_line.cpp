// The command line of every program, run as a separate process without a
// display: --help and --version answer, anything wrong is refused with one
// line and exit code 2.
#include <QProcess>
#include <QTest>

#include "commandline.h"

namespace
{
struct Run {
    int exitCode = -1;
    QString out;
    QStringList errLines;
};

Run run(const QString &program, const QStringList &args)
{
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char *name : { "DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM" })
        env.remove(name);
    process.setProcessEnvironment(env);
    process.start(program, args);
    Run result;
    if (!process.waitForFinished(30000)) {
        process.kill();
        process.waitForFinished();
        return result;
    }
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.out = QString::fromLocal8Bit(process.readAllStandardOutput());
    result.errLines = QString::fromLocal8Bit(process.readAllStandardError()).split('\n', Qt::SkipEmptyParts);
    return result;
}

const QString Version = VARDA_VERSION;
}

class tst_CommandLine : public QObject
{
    Q_OBJECT
private slots:
    void answersAndRefuses_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("out"); // standard output contains this
        QTest::addColumn<QString>("err"); // the one line on standard error contains this; empty: no line

        QList<QPair<QString, QString>> programs = { { VARDA_TOOLBOX_PATH, "varda-toolbox" },
            { GLIDER_STATION_PATH, "glider-station" }, { VARDA_SIM_PATH, "varda-sim" } };
#ifdef VARDA_DECODE_PATH
        programs.append({ VARDA_DECODE_PATH, "varda-decode" });
#endif
        for (const auto &[path, name] : programs) {
            const auto row = [&](const char *what, const QStringList &args, int exitCode, const QString &out,
                                 const QString &err) {
                QTest::addRow("%s %s", qPrintable(name), what)
                    << path << name << args << exitCode << out << err;
            };
            row("help", { "--help" }, 0, "Usage: " + name + " [options]", "");
            row("short help", { "-h" }, 0, "--version", "");
            row("version", { "--version" }, 0, name + ' ' + Version + '\n', "");
            row("unknown option", { "--frobnicate" }, 2, "", name + ": Unknown option 'frobnicate'");
            if (name != "varda-decode") // takes files
                row("stray argument", { "extra" }, 2, "", name + ": unexpected argument 'extra'");
        }
        const QString sim = VARDA_SIM_PATH;
        const auto simRow = [&](const char *what, const QStringList &args, int exitCode, const QString &out,
                                const QString &err) {
            QTest::addRow("varda-sim %s", what) << sim << "varda-sim" << args << exitCode << out << err;
        };
        simRow("defaults in help", { "--help" }, 0,
            "Traffic rate relative to normal, 0.1 to 100 (default 1).", "");
        simRow("missing value", { "--rate" }, 2, "", "varda-sim: Missing value after '--rate'");
        simRow("bad value", { "--stations", "many" }, 2, "", "varda-sim: the number of stations is 0 to 8");
        simRow("value to a flag", { "--pty=yes" }, 2, "", "varda-sim: Unexpected value after '--pty'");
        // The window programs take the toolkit's own options as QApplication does.
        QTest::addRow("varda-toolbox toolkit option")
            << QString(VARDA_TOOLBOX_PATH) << "varda-toolbox"
            << QStringList { "-style", "fusion", "--version" } << 0 << "varda-toolbox " + Version << "";
    }

    void answersAndRefuses()
    {
        QFETCH(QString, program);
        QFETCH(QStringList, args);
        QFETCH(int, exitCode);
        QFETCH(QString, out);
        QFETCH(QString, err);

        const Run result = run(program, args);
        QCOMPARE(result.exitCode, exitCode);
        // Long descriptions are wrapped over several lines.
        QVERIFY2(result.out.simplified().contains(out.simplified()), qPrintable(result.out));
        if (err.isEmpty()) {
            QCOMPARE(result.errLines, QStringList());
        } else {
            QCOMPARE(result.errLines.size(), 1);
            QVERIFY2(result.errLines.first().startsWith(err), qPrintable(result.errLines.first()));
        }
    }

    void defaultsInHelp_data()
    {
        QTest::addColumn<QString>("description");
        QTest::addColumn<QString>("shown");
        QTest::newRow("sentence") << "Packets a second."
                                  << "Packets a second (default: 5).";
        QTest::newRow("no full stop") << "Packets a second"
                                      << "Packets a second (default: 5)";
        QTest::newRow("said already") << "Packets a second (default five)."
                                      << "Packets a second (default five).";
    }

    // The help text states an option's default unless its description does.
    void defaultsInHelp()
    {
        QFETCH(QString, description);
        QFETCH(QString, shown);
        CommandLine cli("example", "An example.");
        cli.addOption(QCommandLineOption("rate", description, "count", "5"));
        QVERIFY2(cli.helpText().simplified().contains(shown), qPrintable(cli.helpText()));
    }

    // Every option the help lists with a value says what it is without it.
    void helpStatesDefaults()
    {
        const Run result = run(VARDA_SIM_PATH, { "--help" });
        QStringList entries; // an option and its description, over its wrapped lines
        for (const QString &line : result.out.split('\n')) {
            if (line.startsWith("  -"))
                entries << line.simplified();
            else if (line.startsWith("    ") && !entries.isEmpty())
                entries.last() += ' ' + line.simplified();
        }
        int withValue = 0;
        for (const QString &entry : qAsConst(entries)) {
            if (!entry.contains('<'))
                continue;
            ++withValue;
            QVERIFY2(entry.contains("default", Qt::CaseInsensitive), qPrintable(entry));
        }
        QVERIFY(withValue >= 7);
    }
};

QTEST_GUILESS_MAIN(tst_CommandLine)
#include "tst_command_line.moc"
