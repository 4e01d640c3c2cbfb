#include <QtTest>

#include "packetmodel.h"
#include "packettableview.h"

// The packet log's table places its RSSI bars once per pass of the event loop:
// they must still sit on their rows, already at the first paint after a burst.
class tst_PacketTableView : public QObject
{
    Q_OBJECT
    packetModel m_model;
    PacketTableView m_view;
    int m_paints = 0, m_misplaced = 0;

    bool barsPlaced() const
    {
        for (int row = 0; row < m_model.rowCount(); row++) {
            const QWidget *bar = m_view.indexWidget(m_model.index(row, 2));
            if (bar && bar->geometry() != m_view.visualRect(m_model.index(row, 2)))
                return false;
        }
        return true;
    }
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            m_paints++;
            m_misplaced += !barsPlaced();
        }
        return false;
    }

private slots:
    // Bursts as one read from the modem brings them: no pass of the event loop between
    // packets, every other one with a bar; then the table is scrolled or resized.
    void barsOnTheirRows()
    {
        m_view.setModel(&m_model);
        m_view.resize(600, 400);
        m_view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&m_view));
        m_view.viewport()->installEventFilter(this);
        const QList<std::function<void()>> changes { [&] { m_view.scrollToBottom(); },
            [&] { m_view.resize(300, 700); } };
        for (const auto &then : changes) {
            m_paints = 0;
            for (int i = 0; i < 250; i++)
                m_model.addPacket(&m_view, "DL1ABC", "rx, tcp", i % 2 ? 255 : -60 - i % 50, i, "spp(rx)");
            QTRY_VERIFY(m_paints > 0);
            QCOMPARE(m_misplaced, 0);
            then();
            QTRY_VERIFY(barsPlaced());
        }
    }
};

QTEST_MAIN(tst_PacketTableView)
#include "tst_packet_table_view.moc"
