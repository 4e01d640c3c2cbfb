#include <QAbstractItemModelTester>
#include <QHeaderView>
#include <QPointer>
#include <QProgressBar>
#include <QTableView>
#include <QtTest>

#include "packetmodel.h"

// The packet log behind a real table view, as the main window shows it.
class tst_PacketModel : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void headers();
    void cells();
    void emptyCallsignLeavesCellEmpty();
    void rssiBar_data();
    void rssiBar();
    void barsMoveWithTheirRows();
    void keepsNewest200();
    void viewOfAnotherModelGetsNoBar();

private:
    QProgressBar *barAt(int row) const;
    void addNumbered(int first, int count, int rssi = 255);

    packetModel *m_model = nullptr;
    QTableView *m_view = nullptr;
    QAbstractItemModelTester *m_tester = nullptr;
};

void tst_PacketModel::init()
{
    m_model = new packetModel(this);
    // Fatal reporting: the QtTest mode formats the text of every check it
    // passes, which at 200 rows takes seconds.
    m_tester
        = new QAbstractItemModelTester(m_model, QAbstractItemModelTester::FailureReportingMode::Fatal, this);
    m_view = new QTableView;
    m_view->setModel(m_model);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view));
}

void tst_PacketModel::cleanup()
{
    delete m_view;
    delete m_tester;
    delete m_model;
}

QProgressBar *tst_PacketModel::barAt(int row) const
{
    return qobject_cast<QProgressBar *>(m_view->indexWidget(m_model->index(row, 2)));
}

// Packets whose size column carries their number.
void tst_PacketModel::addNumbered(int first, int count, int rssi)
{
    for (int i = first; i < first + count; i++)
        m_model->addPacket(m_view, "DL1ABC", "serial", rssi, i, "spp(rx)");
}

void tst_PacketModel::headers()
{
    const QStringList expected { "Station", "Path", "RSSI", "Size [B]", "Content" };
    QCOMPARE(m_model->columnCount(), expected.size());
    QCOMPARE(m_model->rowCount(), 0);
    for (int column = 0; column < expected.size(); column++) {
        QCOMPARE(m_model->headerData(column, Qt::Horizontal).toString(), expected.at(column));
        QCOMPARE(m_view->model()->headerData(column, Qt::Horizontal).toString(), expected.at(column));
    }
}

void tst_PacketModel::cells()
{
    m_model->addPacket(m_view, "DL1ABC-5", "rx(-87), serial", -87, 31, "spp(rx), ext(src, stat)");
    m_model->addPacket(m_view, "OE3XYZ", "local, tcp", 255, 7, "spp(cmd)");

    const QStringList newest { "OE3XYZ", "local, tcp", "", "7", "spp(cmd)" };
    const QStringList older { "DL1ABC-5", "rx(-87), serial", "", "31", "spp(rx), ext(src, stat)" };
    for (int column = 0; column < 5; column++) {
        QCOMPARE(m_model->index(0, column).data().toString(), newest.at(column));
        QCOMPARE(m_model->index(1, column).data().toString(), older.at(column));
    }
    QVERIFY(!m_model->item(0, 2));
    QVERIFY(!barAt(0));
    QVERIFY(barAt(1));
}

void tst_PacketModel::emptyCallsignLeavesCellEmpty()
{
    m_model->addPacket(m_view, QString(), "iridium", 255, 0, QString());
    QCOMPARE(m_model->rowCount(), 1);
    QVERIFY(!m_model->item(0, 0));
    QCOMPARE(m_model->item(0, 1)->text(), QString("iridium"));
    QCOMPARE(m_model->item(0, 3)->text(), QString("0"));
    QCOMPARE(m_model->item(0, 4)->text(), QString());
}

void tst_PacketModel::rssiBar_data()
{
    QTest::addColumn<int>("rssi");
    QTest::addColumn<bool>("hasBar");
    QTest::addColumn<QString>("text");
    QTest::newRow("typical") << -87 << true << "-87 dBm";
    QTest::newRow("bottom of the range") << -140 << true << "-140 dBm";
    QTest::newRow("top of the range") << -20 << true << "-20 dBm";
    QTest::newRow("below the range") << -150 << true << "";
    QTest::newRow("above the range") << -10 << true << "";
    QTest::newRow("unknown") << 255 << false << "";
}

void tst_PacketModel::rssiBar()
{
    QFETCH(int, rssi);
    QFETCH(bool, hasBar);
    QFETCH(QString, text);
    m_model->addPacket(m_view, "DL1ABC", "rx, serial", rssi, 10, "spp(rx)");
    QProgressBar *bar = barAt(0);
    QCOMPARE(bar != nullptr, hasBar);
    QVERIFY(!m_model->item(0, 2));
    if (!bar)
        return;
    QCOMPARE(bar->minimum(), -140);
    QCOMPARE(bar->maximum(), -20);
    QCOMPARE(bar->text(), text);
    if (text.isEmpty())
        QVERIFY(bar->value() < bar->minimum()); // refused: the bar stays empty
    else
        QCOMPARE(bar->value(), rssi);
    QTRY_VERIFY(bar->isVisible());
}

void tst_PacketModel::barsMoveWithTheirRows()
{
    m_model->addPacket(m_view, "A", "rx(-50), udp", -50, 1, "spp(rx)");
    QPointer<QProgressBar> bar = barAt(0);
    QVERIFY(bar);
    addNumbered(2, 3);
    QCOMPARE(barAt(3), bar.data());
    QCOMPARE(m_model->item(3, 0)->text(), QString("A"));
    for (int row = 0; row < 3; row++)
        QVERIFY(!barAt(row));

    m_model->addPacket(m_view, "B", "rx(-60), udp", -60, 5, "spp(rx)");
    QCOMPARE(barAt(0)->value(), -60);
    QCOMPARE(barAt(4), bar.data());

    // Push row "A" out at the bottom: its bar goes with it.
    addNumbered(6, 195);
    QCOMPARE(m_model->rowCount(), 200);
    QCOMPARE(m_model->item(199, 0)->text(), QString("A"));
    QCOMPARE(barAt(199), bar.data());
    addNumbered(201, 1);
    QCOMPARE(m_model->item(199, 3)->text(), QString("2"));
    QVERIFY(!barAt(199));
    QTRY_VERIFY(bar.isNull());
    QCOMPARE(barAt(196)->value(), -60);
}

void tst_PacketModel::keepsNewest200()
{
    addNumbered(1, 200, -90);
    QCOMPARE(m_model->rowCount(), 200);
    QCOMPARE(m_model->item(199, 3)->text(), QString("1"));
    addNumbered(201, 1, -90);
    QCOMPARE(m_model->rowCount(), 200);
    QCOMPARE(m_model->item(0, 3)->text(), QString("201"));
    QCOMPARE(m_model->item(199, 3)->text(), QString("2"));
    addNumbered(202, 150, 255);
    QCOMPARE(m_model->rowCount(), 200);
    QCOMPARE(m_model->item(0, 3)->text(), QString("351"));
    QCOMPARE(m_model->item(199, 3)->text(), QString("152"));
    QCOMPARE(m_view->verticalHeader()->count(), 200);
    QVERIFY(!barAt(149));
    QVERIFY(barAt(150));
    QVERIFY(barAt(199));
    QTRY_COMPARE(m_view->findChildren<QProgressBar *>().size(), 50);
}

void tst_PacketModel::viewOfAnotherModelGetsNoBar()
{
    QTableView other;
    packetModel otherModel;
    other.setModel(&otherModel);
    m_model->addPacket(&other, "DL1ABC", "serial", -87, 1, "spp(rx)");
    m_model->addPacket(nullptr, "DL1ABC", "serial", -87, 2, "spp(rx)");
    QCOMPARE(m_model->rowCount(), 2);
    QVERIFY(other.findChildren<QProgressBar *>().isEmpty());
    QVERIFY(!barAt(0));
}

QTEST_MAIN(tst_PacketModel)
#include "tst_packet_model.moc"
