#include <QPointer>
#include <QProgressBar>
#include <QScrollBar>
#include <QtTest>

#include "packetmodel.h"
#include "packettableview.h"

// The packet log's table places its RSSI bars once per pass of the event
// loop. These tests check that the bars still end up on their rows, also
// when the first paint after a burst comes.

namespace
{

// Records, at each paint of the table, whether every bar sat on its row.
class PaintWatcher : public QObject
{
public:
    PaintWatcher(QTableView *view, std::function<bool()> placed)
        : m_placed(std::move(placed))
    {
        view->viewport()->installEventFilter(this);
    }
    int paints = 0;
    int misplaced = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            paints++;
            if (!m_placed())
                misplaced++;
        }
        return false;
    }

private:
    std::function<bool()> m_placed;
};

} // namespace

class tst_PacketTableView : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void barsOnTheirRows_data();
    void barsOnTheirRows();
    void barsPlacedBeforeThePaint();

private:
    void addBurst(int packets);
    bool barsPlaced() const;
    int barCount() const;

    packetModel *m_model = nullptr;
    PacketTableView *m_view = nullptr;
};

void tst_PacketTableView::init()
{
    m_model = new packetModel(this);
    m_view = new PacketTableView;
    m_view->setModel(m_model);
    m_view->resize(600, 400);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view));
}

void tst_PacketTableView::cleanup()
{
    delete m_view;
    delete m_model;
}

// Every other packet has a bar; nothing runs the event loop in between, as
// when one read from the modem holds many packets.
void tst_PacketTableView::addBurst(int packets)
{
    for (int i = 0; i < packets; i++)
        m_model->addPacket(m_view, "DL1ABC", "rx, tcp", i % 2 ? 255 : -60 - i % 50, i, "spp(rx)");
}

bool tst_PacketTableView::barsPlaced() const
{
    for (int row = 0; row < m_model->rowCount(); row++) {
        const QModelIndex index = m_model->index(row, 2);
        const QWidget *bar = m_view->indexWidget(index);
        if (bar && bar->geometry() != m_view->visualRect(index))
            return false;
    }
    return true;
}

int tst_PacketTableView::barCount() const
{
    return m_view->viewport()->findChildren<QProgressBar *>().size();
}

void tst_PacketTableView::barsOnTheirRows_data()
{
    QTest::addColumn<int>("packets");
    QTest::addColumn<QString>("then");

    QTest::newRow("a few") << 7 << "";
    QTest::newRow("more than the log keeps") << 450 << "";
    QTest::newRow("scrolled to the end") << 450 << "scroll";
    QTest::newRow("resized") << 450 << "resize";
    QTest::newRow("column moved") << 450 << "widen";
}

void tst_PacketTableView::barsOnTheirRows()
{
    QFETCH(int, packets);
    QFETCH(QString, then);

    addBurst(packets);
    // Bars of the rows pushed out are gone at once, not left to a later
    // pass of the event loop.
    const int rows = qMin(packets, 200);
    QCOMPARE(m_model->rowCount(), rows);
    QCOMPARE(barCount(), (rows + 1) / 2);
    if (then == "scroll")
        m_view->scrollToBottom();
    else if (then == "resize")
        m_view->resize(300, 700);
    else if (then == "widen")
        m_view->setColumnWidth(1, 250);
    QTRY_VERIFY(barsPlaced());
}

void tst_PacketTableView::barsPlacedBeforeThePaint()
{
    addBurst(20);
    QTRY_VERIFY(barsPlaced());
    PaintWatcher watcher(m_view, [this] { return barsPlaced(); });
    QPointer<QWidget> oldest = m_view->indexWidget(m_model->index(19, 2));

    addBurst(30);
    QTRY_VERIFY(watcher.paints > 0);
    QCOMPARE(watcher.misplaced, 0);
    QVERIFY(oldest);
    QCOMPARE(m_view->indexWidget(m_model->index(49, 2)), oldest.data());
}

QTEST_MAIN(tst_PacketTableView)
#include "tst_packet_table_view.moc"
