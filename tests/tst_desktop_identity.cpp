// Each window program's icon and desktop entry belong together: the icon in
// the window is the art installed for the menu, in every size drawn.
#include <QGuiApplication>
#include <QSettings>
#include <QTest>

#include "desktopidentity.h"

class tst_DesktopIdentity : public QObject
{
    Q_OBJECT
private slots:
    void identity_data()
    {
        QTest::addColumn<QString>("program");
        QTest::newRow("radio tool") << "varda-toolbox";
        QTest::newRow("vehicle station") << "glider-station";
    }

    void identity()
    {
        QFETCH(QString, program);
        setDesktopIdentity(program);
        QCOMPARE(QGuiApplication::desktopFileName(), program);
        const QList<QSize> sizes = QGuiApplication::windowIcon().availableSizes();
        QCOMPARE(sizes.size(), 6);
        QVERIFY(sizes.contains(QSize(256, 256)));

        const QSettings entry(qEnvironmentVariable("VARDA_SOURCE_DIR") + "/packaging/" + program + ".desktop",
            QSettings::IniFormat);
        QCOMPARE(entry.value("Desktop Entry/Icon").toString(), program);
        QCOMPARE(entry.value("Desktop Entry/Exec").toString(), program);
    }
};

QTEST_MAIN(tst_DesktopIdentity)
#include "tst_desktop_identity.moc"
