#include "mainwindow_harness.h"

using namespace harness;

namespace
{

const char BLUE[] = ":/img/blue-rfid-signal-16.png", GREY[] = ":/img/888888-rfid-signal-16.png";

QStringList formLabels(const WindowDriver &driver)
{
    QStringList labels;
    for (const QLabel *label : driver.find<QGroupBox>("UdpSettingsGroup")->findChildren<QLabel *>())
        labels.append(label->text());
    return labels;
}

bool showsIcon(const WindowDriver &driver, const char *resource)
{
    const QImage shown = driver.find<QLabel>("m_packet_inducator")->pixmap(Qt::ReturnByValue).toImage();
    return shown.convertToFormat(QImage::Format_ARGB32_Premultiplied)
        == QImage(resource).convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

} // namespace

class tst_MainWindowLinks : public QObject
{
    Q_OBJECT

private slots:
    // Nothing is selected at start; every change of the link type builds fresh rows.
    void linkSettings()
    {
        WindowDriver driver;
        QCOMPARE(driver.window.windowTitle(), QStringLiteral("Varda toolbox v1.5"));
        QCOMPARE(driver.find<QComboBox>("linkTypeCombo")->currentIndex(), -1);
        QCOMPARE(formLabels(driver), QStringList { "Link type" });
        QVERIFY(!driver.find<QGroupBox>("iridiumGroup"));
        QVERIFY(showsIcon(driver, GREY));
        QCOMPARE(driver.window.statusBar()->currentMessage(), QStringLiteral("Ready"));

        driver.choose("linkTypeCombo", "Serial");
        QCOMPARE(formLabels(driver), (QStringList { "Link type", "Port", "Baud rate" }));
        QCOMPARE(driver.find<QLineEdit>("serialBaudText")->text(), QStringLiteral("38400"));
        const QPointer<QPushButton> serialButton = driver.find<QPushButton>("connectButton");
        driver.choose("linkTypeCombo", "UDP");
        QVERIFY(serialButton.isNull());
        QCOMPARE(formLabels(driver), (QStringList { "Link type", "Host", "Port" }));
        QCOMPARE(
            driver.find<QLineEdit>("hostText")->text() + " " + driver.find<QLineEdit>("portText")->text(),
            QStringLiteral("127.0.0.1 10004"));
    }

    void hostResolution_data()
    {
        QTest::addColumn<QString>("host");
        QTest::addColumn<QString>("line");
        QTest::newRow("ipv4 literal") << QString("127.0.0.1") << "Valid IPv4 address.";
        QTest::newRow("ipv6 literal is looked up") << QString("::1") << "DNS lookup success: \"::1\"";
        QTest::newRow("invalid name") << QString("no such host!") << "DNS lookup failed: \"";
    }

    void hostResolution()
    {
        QFETCH(QString, host);
        QFETCH(QString, line);
        WindowDriver driver;
        driver.choose("linkTypeCombo", "TCP");
        driver.setField("hostText", host);
        driver.setField("portText", "1");
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("^" + QRegularExpression::escape(line)));
        driver.pressConnect();
    }

    // Keep-alives at connect and each tick, to the port then in the field; packets light the icon.
    void udpLink()
    {
        Modem peer(Modem::Udp), second(Modem::Udp);
        WindowDriver driver;
        QVERIFY(peer.open());
        QVERIFY(second.open());
        QVERIFY(driver.connectTo(&peer));
        peer.send(rxFrame(140, 1, src("BRAVO-2", 1)));
        QTRY_COMPARE(driver.rows("packetTable"), 1);
        QVERIFY(showsIcon(driver, BLUE));
        QTRY_VERIFY(showsIcon(driver, GREY));
        driver.setField("portText", second.address);
        QVERIFY(second.accept());
        QVERIFY(!peer.udp->hasPendingDatagrams());
        driver.pressConnect();
        QCOMPARE(driver.connectText(), QStringLiteral("Connect"));
        QVERIFY(!driver.find<QTimer>("m_udp_tick_timer")->isActive());
    }

    // A port that cannot be opened, then a pseudo-terminal; a change of the link type closes it.
    void serialLink()
    {
        Modem modem(Modem::Serial);
        WindowDriver driver;
        driver.choose("linkTypeCombo", "Serial");
        driver.setField("serialPortCombo", modem.dir.filePath("no-such-port"));
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("^Port NOT opened: \""));
        driver.pressConnect();
        QCOMPARE(driver.connectText(), QStringLiteral("Connect"));
        QVERIFY(modem.open());
        QVERIFY(driver.connectTo(&modem));
        const auto *port = driver.window.findChild<QSerialPort *>();
        QCOMPARE(port->baudRate(), 38400);
        driver.choose("linkTypeCombo", "TCP");
        QVERIFY(!port->isOpen());
    }
};

QTEST_MAIN(tst_MainWindowLinks)
#include "tst_mainwindow_links.moc"
