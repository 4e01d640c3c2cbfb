#include <QAbstractItemModelTester>
#include <QPointer>
#include <QProgressBar>
#include <QTableView>
#include <QtTest>

#include "model_text.h"
#include "packetmodel.h"

// The packet log behind a real table view, as the main window shows it.
class tst_PacketModel : public QObject
{
    Q_OBJECT
    packetModel *m_model = nullptr;
    QTableView *m_view = nullptr;

    QProgressBar *barAt(int row) const
    {
        return qobject_cast<QProgressBar *>(m_view->indexWidget(m_model->index(row, 2)));
    }

private slots:
    void init()
    {
        m_model = new packetModel(this);
        // Fatal: the QtTest mode formats every passing check, seconds at 200 rows.
        new QAbstractItemModelTester(m_model, QAbstractItemModelTester::FailureReportingMode::Fatal, m_model);
        m_view = new QTableView;
        m_view->setModel(m_model);
        m_view->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_view));
    }
    void cleanup()
    {
        delete m_view;
        delete m_model;
    }

    void cells()
    {
        QCOMPARE(rowText(m_model, -1), QString("Station|Path|RSSI|Size [B]|Content"));
        m_model->addPacket(m_view, "DL1ABC-5", "rx(-87), serial", -87, 31, "spp(rx), ext(src, stat)");
        m_model->addPacket(m_view, "OE3XYZ", "local, tcp", 255, 7, "spp(cmd)");
        m_model->addPacket(m_view, QString(), "iridium", 255, 0, QString());
        m_model->addPacket(nullptr, "N0CALL", "serial", -90, 2, "spp(rx)"); // no view: no bar
        QCOMPARE(rowText(m_model, 3), QString("DL1ABC-5|rx(-87), serial||31|spp(rx), ext(src, stat)"));
        QCOMPARE(rowText(m_model, 2), QString("OE3XYZ|local, tcp||7|spp(cmd)"));
        QCOMPARE(rowText(m_model, 1), QString("|iridium||0|"));
        QVERIFY(!m_model->item(1, 0)); // empty callsign: no item
        for (int row = 0; row < 4; row++) {
            QVERIFY(!m_model->item(row, 2));
            QCOMPARE(barAt(row) != nullptr, row == 3);
        }
    }

    // The bar's range is -140..-20 dBm; a value outside it leaves the bar empty, without text.
    void rssiBars()
    {
        QStringList texts;
        for (const int rssi : { -140, -20, -150, -10 }) {
            m_model->addPacket(m_view, "DL1ABC", "rx, serial", rssi, 10, "spp(rx)");
            texts << (barAt(0) ? barAt(0)->text() : "no bar");
        }
        QCOMPARE(texts, (QStringList { "-140 dBm", "-20 dBm", "", "" }));
    }

    // Newest row on top; a bar moves with its row and goes when the 201st packet pushes it out.
    void keepsNewest200WithTheirBars()
    {
        m_model->addPacket(m_view, "A", "rx(-50), udp", -50, 1, "spp(rx)");
        QPointer<QProgressBar> bar = barAt(0);
        for (int i = 2; i <= 200; i++)
            m_model->addPacket(m_view, "B", "serial", i % 2 ? 255 : -60, i, "spp(rx)");
        QCOMPARE(m_model->rowCount(), 200);
        QCOMPARE(barAt(199), bar.data());
        m_model->addPacket(m_view, "C", "serial", 255, 201, "spp(rx)");
        QCOMPARE(m_model->rowCount(), 200);
        QCOMPARE(m_model->item(0, 3)->text() + "|" + m_model->item(199, 3)->text(), QString("201|2"));
        QTRY_VERIFY(bar.isNull());
        QTRY_COMPARE(m_view->findChildren<QProgressBar *>().size(), 100);
    }
};

QTEST_MAIN(tst_PacketModel)
#include "tst_packet_model.moc"
