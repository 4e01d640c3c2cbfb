#include <QAbstractItemModelTester>
#include <QHeaderView>
#include <QPointer>
#include <QStandardItemModel>
#include <QTableView>
#include <QTreeView>
#include <QtTest>

#include "stationlistmodel.h"
#include "varda_extension.h"
#include "varda_extension_qt.h"

namespace
{

VardaExtension extensionFrom(const QString &callsign, uint8_t seq, const QByteArray &reply = QByteArray())
{
    VardaExtension out;
    out.addSource(callsign, seq);
    QByteArray payload = out.getPacket();
    if (!reply.isNull())
        payload += char(VRD_EXT_TEXT) + QByteArray(1, char(reply.size())) + reply;
    VardaExtension in;
    in.parse(reinterpret_cast<const uint8_t *>(payload.constData()), uint16_t(payload.size()));
    return in;
}

} // namespace

class tst_StationList : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();
    void onlyHorizontalDisplayText();
    void stationsByCallsignAreCaseSensitive();
    void stationsByRow();
    void updateKeepsOneRowPerStation();
    void satelliteStationHasNoPath();
    void absoluteTime();
    void relativeTime_data();
    void relativeTime();
    void relativeTimeRefreshesEverySecond();
    void everyChangeIsALayoutChange();
    void viewsFollowTheList();
    void stationsGoWithTheList();
    void toHms_data();
    void toHms();

private:
    QString lastActivity(int row) const;

    StationListModel *m_model = nullptr;
    QAbstractItemModelTester *m_tester = nullptr;
};

void tst_StationList::initTestCase()
{
    // Parameter types of the layout signals, for QSignalSpy.
    qRegisterMetaType<QList<QPersistentModelIndex>>();
    qRegisterMetaType<QAbstractItemModel::LayoutChangeHint>();
}

void tst_StationList::init()
{
    m_model = new StationListModel;
    m_tester = new QAbstractItemModelTester(m_model, QAbstractItemModelTester::FailureReportingMode::QtTest);
}

void tst_StationList::cleanup()
{
    delete m_tester;
    delete m_model;
}

QString tst_StationList::lastActivity(int row) const
{
    return m_model->index(row, 1).data().toString();
}

void tst_StationList::onlyHorizontalDisplayText()
{
    QCOMPARE(m_model->columnCount(), 3);
    const QStringList expected { "Callsign", "Last activity", "Path" };
    for (int section = 0; section < 3; section++) {
        QCOMPARE(m_model->headerData(section, Qt::Horizontal).toString(), expected.at(section));
        QVERIFY(!m_model->headerData(section, Qt::Vertical).isValid());
        QVERIFY(!m_model->headerData(section, Qt::Horizontal, Qt::ToolTipRole).isValid());
    }
    m_model->append("DL1ABC");
    const QModelIndex cell = m_model->index(0, 0);
    QCOMPARE(cell.data().toString(), QString("DL1ABC"));
    for (const int role : { Qt::EditRole, Qt::ToolTipRole, Qt::DecorationRole, Qt::UserRole })
        QVERIFY(!cell.data(role).isValid());
    QVERIFY(!m_model->index(0, 3).isValid());
}

void tst_StationList::stationsByCallsignAreCaseSensitive()
{
    Station *upper = m_model->append("DL1ABC");
    Station *lower = m_model->append("dl1abc");
    QCOMPARE(m_model->rowCount(), 2);
    QCOMPARE(m_model->get("DL1ABC"), upper);
    QCOMPARE(m_model->get("dl1abc"), lower);
    QVERIFY(!m_model->get("Dl1abc"));
    QVERIFY(!m_model->get("DL1ABC-1"));
    QVERIFY(!m_model->get(QString()));

    // append does not look for an existing station; get finds the first.
    Station *again = m_model->append("DL1ABC");
    QVERIFY(again != upper);
    QCOMPARE(m_model->rowCount(), 3);
    QCOMPARE(m_model->get("DL1ABC"), upper);
}

void tst_StationList::stationsByRow()
{
    Station *first = m_model->append("DL1ABC");
    Station *second = m_model->append("OE3XYZ");
    QCOMPARE(m_model->get(0), first);
    QCOMPARE(m_model->get(1), second);
    QVERIFY(!m_model->get(2));
    QVERIFY(!m_model->get(-1));
    QCOMPARE(m_model->getExtensionModel(1), second->getExtensionModel());
    QVERIFY(!m_model->getExtensionModel(2));
    QVERIFY(!m_model->getExtensionModel(-1));

    const QStandardItemModel *properties = first->getExtensionModel();
    QCOMPARE(properties->columnCount(), 2);
    QCOMPARE(properties->rowCount(), 0);
    QCOMPARE(properties->headerData(0, Qt::Horizontal).toString(), QString("Property"));
    QCOMPARE(properties->headerData(1, Qt::Horizontal).toString(), QString("Value"));
    QCOMPARE(first->getRssi(), 255);
    QCOMPARE(first->getPaths(), QStringList());
}

void tst_StationList::updateKeepsOneRowPerStation()
{
    m_model->append("OE3XYZ");
    Station *station = m_model->append("DL1ABC-5");
    QAbstractItemModelTester propertyTester(
        station->getExtensionModel(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    const QDateTime first(QDate(2026, 11, 16), QTime(14, 3, 7));
    station->update(first, extensionFrom("DL1ABC-5", 1), { "rx(-87)", "serial" });
    station->update(first.addSecs(70), extensionFrom("DL1ABC-5", 2, "pong"), { "local", "tcp" });

    QCOMPARE(m_model->rowCount(), 2);
    QCOMPARE(m_model->index(1, 0).data().toString(), QString("DL1ABC-5"));
    QCOMPARE(lastActivity(1), QString("14:04:17 16.11.2026"));
    QCOMPARE(m_model->index(1, 2).data().toString(), QString("local, tcp"));
    QCOMPARE(station->getPaths(), (QStringList { "local", "tcp" }));

    const QStandardItemModel *properties = station->getExtensionModel();
    QCOMPARE(properties->rowCount(), 2);
    const QStandardItem *src = properties->item(0);
    QCOMPARE(src->text(), QString("src"));
    QCOMPARE(src->rowCount(), 2);
    QCOMPARE(src->child(1, 1)->text(), QString("2"));
    QCOMPARE(properties->item(1)->text(), QString("text"));
}

void tst_StationList::satelliteStationHasNoPath()
{
    Station *station = m_model->append("300234010753370");
    station->updateTime(QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5)));
    QCOMPARE(m_model->index(0, 0).data().toString(), QString("300234010753370"));
    QCOMPARE(lastActivity(0), QString("03:04:05 02.01.2026"));
    QCOMPARE(m_model->index(0, 2).data().toString(), QString());
    QCOMPARE(station->getExtensionModel()->rowCount(), 0);
}

void tst_StationList::absoluteTime()
{
    const QDateTime before = QDateTime::currentDateTime().addMSecs(-999);
    Station *station = m_model->append("DL1ABC");
    const QDateTime after = QDateTime::currentDateTime();
    // A new station counts as heard when it was created.
    const QDateTime shown = QDateTime::fromString(lastActivity(0), "hh:mm:ss dd.MM.yyyy");
    QVERIFY2(shown >= before && shown <= after, qPrintable(lastActivity(0)));
    station->updateTime(QDateTime(QDate(2026, 12, 31), QTime(23, 59, 59)));
    QCOMPARE(lastActivity(0), QString("23:59:59 31.12.2026"));
    QCOMPARE(station->getTimeString(), QString("23:59:59 31.12.2026"));
    station->updateTime(QDateTime(QDate(2027, 1, 1), QTime(0, 0, 0)));
    QCOMPARE(lastActivity(0), QString("00:00:00 01.01.2027"));
}

void tst_StationList::relativeTime_data()
{
    QTest::addColumn<int>("age");
    QTest::addColumn<QString>("text");
    QTest::newRow("just now") << 0 << "00:00:00";
    QTest::newRow("3725 s") << 3725 << "01:02:05";
    QTest::newRow("a second short of a day") << 86399 << "23:59:59";
    QTest::newRow("one day") << 86400 << "1 day(s) 00:00:00";
    QTest::newRow("1 d 1 h 1 min 1 s") << 90061 << "1 day(s) 01:01:01";
}

void tst_StationList::relativeTime()
{
    QFETCH(int, age);
    QFETCH(QString, text);
    Station *station = m_model->append("DL1ABC");
    m_model->setDeltaTime(true);
    // Should the clock pass a whole second between setting the time and
    // reading the text, the age is one more than asked for: try again.
    for (int attempt = 0; attempt < 3; attempt++) {
        const QDateTime now = QDateTime::currentDateTime();
        station->updateTime(now.addSecs(-age));
        const QString shown = lastActivity(0);
        if (now.secsTo(QDateTime::currentDateTime()) == 0) {
            QCOMPARE(shown, text);
            QCOMPARE(station->getAge(), quint32(age));
            m_model->setDeltaTime(false);
            QCOMPARE(lastActivity(0), now.addSecs(-age).toString("hh:mm:ss dd.MM.yyyy"));
            return;
        }
    }
    QFAIL("the clock kept running past whole seconds");
}

void tst_StationList::relativeTimeRefreshesEverySecond()
{
    QTableView view;
    view.setModel(m_model);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    Station *station = m_model->append("DL1ABC");
    QSignalSpy layout(m_model, &QAbstractItemModel::layoutChanged);

    m_model->setDeltaTime(true);
    QCOMPARE(layout.count(), 1);
    QVERIFY(layout.wait(5000));
    QVERIFY(layout.wait(5000));
    station->updateTime(QDateTime::currentDateTime().addSecs(-3725));

    m_model->setDeltaTime(false);
    QCOMPARE(lastActivity(0), station->getTimeString());
    layout.clear();
    QVERIFY(!layout.wait(2500));
}

void tst_StationList::everyChangeIsALayoutChange()
{
    QSignalSpy about(m_model, &QAbstractItemModel::layoutAboutToBeChanged);
    QSignalSpy layout(m_model, &QAbstractItemModel::layoutChanged);
    QSignalSpy data(m_model, &QAbstractItemModel::dataChanged);
    QSignalSpy inserted(m_model, &QAbstractItemModel::rowsInserted);

    Station *station = m_model->append("DL1ABC");
    QCOMPARE(layout.count(), 1);
    station->updateTime(QDateTime::currentDateTime());
    QCOMPARE(layout.count(), 2);
    station->update(QDateTime::currentDateTime(), extensionFrom("DL1ABC", 1), { "serial" });
    QCOMPARE(layout.count(), 3);
    m_model->changed();
    QCOMPARE(layout.count(), 4);
    m_model->tickDeltaTime();
    QCOMPARE(layout.count(), 5);
    QCOMPARE(about.count(), layout.count());
    QCOMPARE(data.count(), 0);
    QCOMPARE(inserted.count(), 0);
}

void tst_StationList::viewsFollowTheList()
{
    QTableView table;
    table.setModel(m_model);
    QTreeView tree;
    tree.setModel(m_model);
    QTreeView properties;
    table.show();
    tree.show();
    properties.show();
    QVERIFY(QTest::qWaitForWindowExposed(&table));

    m_model->append("DL1ABC");
    Station *second = m_model->append("OE3XYZ");
    second->update(QDateTime::currentDateTime(), extensionFrom("OE3XYZ", 9, "ok"), { "rx(-90)", "udp" });
    QTRY_COMPARE(table.verticalHeader()->count(), 2);
    QCOMPARE(table.horizontalHeader()->count(), 3);
    QCOMPARE(tree.model()->rowCount(tree.rootIndex()), 2);
    QTRY_VERIFY(tree.visualRect(m_model->index(1, 0)).isValid());
    // Rows carry no vertical header text.
    QVERIFY(!table.model()->headerData(0, Qt::Vertical).isValid());

    properties.setModel(m_model->getExtensionModel(1));
    properties.expandAll();
    QCOMPARE(properties.model()->rowCount(), 2);
    QVERIFY(properties.isExpanded(properties.model()->index(0, 0)));

    m_model->append("N0CALL");
    QTRY_COMPARE(table.verticalHeader()->count(), 3);
    QCOMPARE(table.model()->index(2, 0).data().toString(), QString("N0CALL"));
}

void tst_StationList::stationsGoWithTheList()
{
    auto *model = new StationListModel;
    QPointer<Station> station = model->append("DL1ABC");
    QPointer<QStandardItemModel> properties = station->getExtensionModel();
    QCOMPARE(properties->parent(), station.data());
    delete model;
    QVERIFY(station.isNull());
    QVERIFY(properties.isNull());
}

void tst_StationList::toHms_data()
{
    QTest::addColumn<uint>("seconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << 0u << "0:00:00";
    QTest::newRow("3725 s") << 3725u << "1:02:05";
    QTest::newRow("past a day") << 90061u << "25:01:01";
    QTest::newRow("largest") << 4294967295u << "1193046:28:15";
}

void tst_StationList::toHms()
{
    QFETCH(uint, seconds);
    QFETCH(QString, text);
    QCOMPARE(::toHms(seconds), text);
}

QTEST_MAIN(tst_StationList)
#include "tst_station_list.moc"
