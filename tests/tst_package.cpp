// The Debian package as built by CPack (the package_deb test), checked with
// the tools a packager uses: lintian, desktop-file-validate, and dpkg -x into
// a scratch root from which the programs run.
#include <QDir>
#include <QDirIterator>
#include <QProcess>
#include <QRegularExpression>
#include <QTcpSocket>
#include <QTest>

#include "reference_frames.h"
#include "simprocess.h"

namespace
{
const QString Version = VARDA_VERSION;
const QString Root = VARDA_PACKAGE_ROOT; // where the package is unpacked; VARDA_SIM_PATH lies inside
const QStringList Programs = QString(VARDA_PROGRAMS).split(',');
const QStringList WindowPrograms = { "varda-toolbox", "glider-station" };

struct Output {
    int exitCode = -1;
    QString text; // standard output and error
};

Output runTool(const QString &program, const QStringList &args, int timeoutMs = 60000)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, args);
    Output output;
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished();
        return output;
    }
    output.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    output.text = QString::fromLocal8Bit(process.readAll());
    return output;
}

QString desktopKey(const QString &entry, const QString &key)
{
    QFile file(entry);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    const QRegularExpression line("^" + key + "=(.*)$", QRegularExpression::MultilineOption);
    return line.match(QString::fromUtf8(file.readAll())).captured(1);
}
}

class tst_Package : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        const QDir build(VARDA_PACKAGE_DIR);
        const QStringList debs
            = build.entryList({ "varda-toolbox_" + Version + "-*.deb" }, QDir::Files, QDir::Time);
        QVERIFY2(!debs.isEmpty(), "no package in the build folder: run the package_deb test or make package");
        m_deb = build.filePath(debs.first());
        QVERIFY(QDir(Root).removeRecursively());
        const Output unpacked = runTool("dpkg", { "-x", m_deb, Root });
        QVERIFY2(unpacked.exitCode == 0, qPrintable(unpacked.text));
    }

    void holds_data()
    {
        QTest::addColumn<QString>("path");
        for (const QString &program : Programs) {
            QTest::newRow(qPrintable(program)) << "usr/bin/" + program;
            QTest::newRow(qPrintable(program + " manual")) << "usr/share/man/man1/" + program + ".1.gz";
        }
        for (const QString &program : WindowPrograms) {
            QTest::newRow(qPrintable(program + " entry")) << "usr/share/applications/" + program + ".desktop";
            QTest::newRow(qPrintable(program + " svg"))
                << "usr/share/icons/hicolor/scalable/apps/" + program + ".svg";
            for (int size : { 16, 32, 48, 64, 128, 256 })
                QTest::addRow("%s %d", qPrintable(program), size)
                    << QString("usr/share/icons/hicolor/%1x%1/apps/%2.png").arg(size).arg(program);
        }
        QTest::newRow("copyright") << "usr/share/doc/varda-toolbox/copyright";
        QTest::newRow("changelog") << "usr/share/doc/varda-toolbox/changelog.Debian.gz";
    }

    void holds()
    {
        QFETCH(QString, path);
        QVERIFY(QFileInfo(Root + '/' + path).isFile());
    }

    // No libraries, tests, benchmarks or fuzz targets: every file lies where
    // an installed program's parts belong.
    void holdsNothingElse()
    {
        const QRegularExpression allowed("^usr/(bin/[a-z-]+|share/applications/[a-z-]+\\.desktop"
                                         "|share/icons/hicolor/[0-9a-z]+/apps/[a-z-]+\\.(png|svg)"
                                         "|share/man/man1/[a-z-]+\\.1\\.gz|share/doc/varda-toolbox/[A-Za-z.]+"
                                         "|lib/[^/]+/wireshark/plugins/[a-z]+\\.lua)$");
        QDirIterator files(Root, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        int count = 0;
        while (files.hasNext()) {
            const QString path = QDir(Root).relativeFilePath(files.next());
            QVERIFY2(allowed.match(path).hasMatch(), qPrintable(path));
            ++count;
        }
        QVERIFY(count >= 24);
    }

    // Where tshark and Wireshark load Lua dissectors from for every user.
    void dissectorWhereWiresharkLooks()
    {
#ifdef VARDA_DISSECTOR
        const Output folders = runTool("tshark", { "-G", "folders" });
        QCOMPARE(folders.exitCode, 0);
        const QString global
            = QRegularExpression("^Global Lua Plugins:\\s*(\\S+)$", QRegularExpression::MultilineOption)
                  .match(folders.text)
                  .captured(1);
        QVERIFY2(!global.isEmpty(), qPrintable(folders.text));
        QVERIFY(QFileInfo(Root + global + "/" VARDA_DISSECTOR).isFile());
#else
        QSKIP("no dissector in this tree");
#endif
    }

    void lintianFindsNoErrors()
    {
        const Output lintian = runTool("lintian", { "--tag-display-limit", "0", m_deb }, 180000);
        QVERIFY2(lintian.exitCode == 0 || lintian.exitCode == 1, qPrintable(lintian.text)); // 2: it failed
        const QStringList lines = lintian.text.split('\n', Qt::SkipEmptyParts);
        for (const QString &line : lines)
            qInfo().noquote() << line;
        QStringList errors = lines.filter(QRegularExpression("^E: "));
        QVERIFY2(errors.isEmpty(), qPrintable(errors.join('\n')));
    }

    void desktopEntries_data()
    {
        QTest::addColumn<QString>("program");
        for (const QString &program : WindowPrograms)
            QTest::newRow(qPrintable(program)) << program;
    }

    // Valid, and what the menu starts and shows is in the package.
    void desktopEntries()
    {
        QFETCH(QString, program);
        const QString entry = Root + "/usr/share/applications/" + program + ".desktop";
        const Output validate = runTool("desktop-file-validate", { entry });
        QVERIFY2(validate.exitCode == 0, qPrintable(validate.text));
        QCOMPARE(desktopKey(entry, "Exec"), program);
        QVERIFY(QFileInfo(Root + "/usr/bin/" + desktopKey(entry, "Exec")).isExecutable());
        QVERIFY(QFileInfo(Root + "/usr/share/icons/hicolor/48x48/apps/" + desktopKey(entry, "Icon") + ".png")
                    .isFile());
    }

    void programsRun_data()
    {
        QTest::addColumn<QString>("program");
        for (const QString &program : Programs)
            QTest::newRow(qPrintable(program)) << program;
    }

    void programsRun()
    {
        QFETCH(QString, program);
        const Output version = runTool(Root + "/usr/bin/" + program, { "--version" });
        QCOMPARE(version.exitCode, 0);
        QCOMPARE(version.text, program + ' ' + Version + '\n');
    }

    // The unpacked simulator serves the modem on a free port and answers a command.
    void simulatorAnswers()
    {
        SimProcess sim;
        QVERIFY2(sim.start({ "--seed", "3" }), qPrintable(sim.log()));
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, sim.modemPort);
        QVERIFY(socket.waitForConnected(5000));
        socket.write(reference::sppFrame(3, "call"));
        QByteArray received;
        QTRY_VERIFY_WITH_TIMEOUT((received += socket.readAll()).contains("callsign BASE-1"), 15000);
    }

private:
    QString m_deb;
};

QTEST_GUILESS_MAIN(tst_Package)
#include "tst_package.moc"
