#include <QAbstractItemModelTester>
#include <QHeaderView>
#include <QStandardItemModel>
#include <QTableView>
#include <QTreeView>
#include <QtTest>

#include "model_text.h"
#include "stationlistmodel.h"
#include "varda_extension_qt.h"

using Tester = QAbstractItemModelTester;

// A received packet with "data" and "src" sub-packets.
static VardaExtension extensionFrom(const QString &callsign, uint8_t seq)
{
    VardaExtension out, in;
    out.addSource(callsign, seq);
    out.addData("x");
    const QByteArray payload = out.getPacket();
    in.parse(reinterpret_cast<const uint8_t *>(payload.constData()), uint16_t(payload.size()));
    return in;
}

class tst_StationList : public QObject
{
    Q_OBJECT
    StationListModel *m_model = nullptr;

private slots:
    void init()
    {
        m_model = new StationListModel;
        new Tester(m_model, Tester::FailureReportingMode::QtTest, m_model);
    }
    void cleanup()
    {
        delete m_model;
    }

    void stations()
    {
        QCOMPARE(rowText(m_model, -1), QString("Callsign|Last activity|Path"));
        QVERIFY(!m_model->headerData(0, Qt::Vertical).isValid()); // rows carry no header text
        const QDateTime before = QDateTime::currentDateTime().addMSecs(-999);
        Station *upper = m_model->append("DL1ABC-5");
        // A new station counts as heard when it was created.
        const QDateTime created
            = QDateTime::fromString(rowText(m_model, 0).section('|', 1, 1), "hh:mm:ss dd.MM.yyyy");
        QVERIFY(created >= before && created <= QDateTime::currentDateTime());
        Station *lower = m_model->append("dl1abc-5");
        QCOMPARE(m_model->get("DL1ABC-5"), upper);
        QCOMPARE(m_model->get("dl1abc-5"), lower);
        QVERIFY(!m_model->get("Dl1abc-5"));
        QCOMPARE(m_model->get(1), lower);
        QCOMPARE(m_model->getExtensionModel(0), upper->getExtensionModel());
        QVERIFY(!m_model->get(2) && !m_model->get(-1) && !m_model->getExtensionModel(2)
            && !m_model->getExtensionModel(-1));

        // Updates stay in their row and show the latest packet.
        QStandardItemModel *properties = upper->getExtensionModel();
        Tester propertyTester(properties, Tester::FailureReportingMode::QtTest);
        QCOMPARE(properties->headerData(0, Qt::Horizontal).toString(), QString("Property"));
        QCOMPARE(properties->headerData(1, Qt::Horizontal).toString(), QString("Value"));
        const QDateTime first(QDate(2026, 11, 16), QTime(14, 3, 7));
        upper->update(first, extensionFrom("DL1ABC-5", 1), { "rx(-87)", "serial" });
        upper->update(first.addSecs(70), extensionFrom("DL1ABC-5", 2), { "local", "tcp" });
        QCOMPARE(rowText(m_model, 0), QString("DL1ABC-5|14:04:17 16.11.2026|local, tcp"));
        QCOMPARE(properties->rowCount(), 2);
        QCOMPARE(properties->item(1)->child(1, 1)->text(), QString("2")); // src: Seq. nr

        // A satellite message: a time, no extension content, no path.
        Station *modem = m_model->append("300234010753370");
        modem->updateTime(QDateTime(QDate(2027, 1, 2), QTime(3, 4, 5)));
        QCOMPARE(rowText(m_model, 2), QString("300234010753370|03:04:05 02.01.2027|"));
        QCOMPARE(modem->getExtensionModel()->rowCount(), 0);

        // append does not look for the callsign: a second row of it is
        // listed, but the first one is what a look-up finds.
        Station *again = m_model->append("DL1ABC-5");
        QCOMPARE(m_model->get(3), again);
        QCOMPARE(m_model->get("DL1ABC-5"), upper);
    }

    // Every change redraws the whole table, never single cells; ages are
    // whole seconds, redrawn every second while shown.
    void relativeTime()
    {
        qRegisterMetaType<QList<QPersistentModelIndex>>(); // for QSignalSpy
        qRegisterMetaType<QAbstractItemModel::LayoutChangeHint>();
        QSignalSpy layout(m_model, &QAbstractItemModel::layoutChanged);
        QSignalSpy cells(m_model, &QAbstractItemModel::dataChanged);
        Station *station = m_model->append("DL1ABC");
        station->update(QDateTime::currentDateTime(), extensionFrom("DL1ABC", 1), { "serial" });
        const QDateTime heard = QDateTime::currentDateTime().addSecs(-90061);
        station->updateTime(heard);
        m_model->tickDeltaTime();
        m_model->setDeltaTime(true);
        QCOMPARE(layout.count(), 5);
        QVERIFY(cells.isEmpty());
        QCOMPARE(rowText(m_model, 0), QString("DL1ABC|1 day(s) 01:01:01|serial"));
        QCOMPARE(station->getAge(), quint32(90061));
        QElapsedTimer clock;
        clock.start();
        QVERIFY(layout.wait(3000));
        QVERIFY(clock.elapsed() > 700);
        m_model->setDeltaTime(false);
        QCOMPARE(rowText(m_model, 0), "DL1ABC|" + heard.toString("hh:mm:ss dd.MM.yyyy") + "|serial");
        layout.clear();
        QVERIFY(!layout.wait(1500));
    }

    void viewsFollowTheList()
    {
        QTableView table;
        QTreeView properties;
        table.setModel(m_model);
        table.show();
        QVERIFY(QTest::qWaitForWindowExposed(&table));
        m_model->append("DL1ABC");
        m_model->append("OE3XYZ")->update(
            QDateTime::currentDateTime(), extensionFrom("OE3XYZ", 9), { "udp" });
        QTRY_COMPARE(table.verticalHeader()->count(), 2);
        properties.setModel(m_model->getExtensionModel(1));
        properties.expandAll();
        QVERIFY(properties.isExpanded(properties.model()->index(1, 0)));
    }
};

QTEST_MAIN(tst_StationList)
#include "tst_station_list.moc"
