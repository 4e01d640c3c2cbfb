#include <QAbstractItemModelTester>
#include <QPointer>
#include <QProgressBar>
#include <QStandardItemModel>
#include <QTableView>
#include <QtTest>

#include "packetmodel.h"
#include "stationlistmodel.h"
#include "varda_extension_qt.h"

using Tester = QAbstractItemModelTester;

// The display texts of a row joined with '|'; row -1 gives the horizontal headers.
static QString rowText(const QAbstractItemModel *model, int row)
{
    QStringList out;
    for (int c = 0; c < model->columnCount(); c++)
        out << (row < 0 ? model->headerData(c, Qt::Horizontal) : model->index(row, c).data()).toString();
    return out.join('|');
}

// A received packet with a "src" sub-packet.
static VardaExtension extensionFrom(const QString &callsign, uint8_t seq)
{
    VardaExtension out, in;
    out.addSource(callsign, seq);
    const QByteArray payload = out.getPacket();
    in.parse(reinterpret_cast<const uint8_t *>(payload.constData()), uint16_t(payload.size()));
    return in;
}

// The packet log and the station list, the two table models of the window.
class tst_Models : public QObject
{
    Q_OBJECT
private slots:
    // The log behind a table view, newest row first, until the 201st packet pushes out the oldest.
    void packetLog()
    {
        packetModel model;
        // Fatal: the QtTest mode formats every passing check, seconds at 200 rows.
        Tester tester(&model, Tester::FailureReportingMode::Fatal);
        QTableView view;
        view.setModel(&model);
        const auto bar
            = [&](int row) { return qobject_cast<QProgressBar *>(view.indexWidget(model.index(row, 2))); };
        QCOMPARE(rowText(&model, -1), QString("Station|Path|RSSI|Size [B]|Content"));
        model.addPacket(&view, "DL1ABC-5", "rx(-87), serial", -87, 31, "spp(rx), ext(src, stat)");
        const QPointer<QProgressBar> oldest = bar(0);
        model.addPacket(&view, QString(), "local, tcp", 255, 7, "spp(cmd)");
        model.addPacket(nullptr, "N0CALL", "serial", -90, 2, "spp(rx)"); // no view: no bar
        QVERIFY(!model.item(1, 0));
        QVERIFY(!model.item(2, 2));
        QVERIFY(!bar(1));
        QVERIFY(!bar(0));
        // The bar's range is -140..-20 dBm; a value outside it leaves the bar empty, without text.
        QStringList texts;
        for (const int rssi : { -140, -20, -150, -10 }) {
            model.addPacket(&view, "DL1ABC", "rx, serial", rssi, 10, "spp(rx)");
            texts << bar(0)->text();
        }
        QCOMPARE(texts, (QStringList { "-140 dBm", "-20 dBm", "", "" }));
        while (model.rowCount() < 200)
            model.addPacket(&view, "B", "serial", 255, model.rowCount(), "spp(rx)");
        QCOMPARE(bar(199), oldest.data());
        model.addPacket(&view, "C", "serial", 255, 201, "spp(rx)");
        QCOMPARE(model.rowCount(), 200);
        QCOMPARE(model.item(0, 3)->text() + "|" + model.item(199, 3)->text(), QString("201|7"));
        // A pushed-out row's bar is gone at once, not left to the event loop.
        QVERIFY(oldest.isNull());
        QCOMPARE(view.findChildren<QProgressBar *>().size(), 4);
    }

    // One list through stations heard, updated and listed twice, then their ages shown and hidden.
    void stations()
    {
        StationListModel list;
        Tester tester(&list, Tester::FailureReportingMode::QtTest);
        int layouts = 0; // every change is announced as a layout change of the whole table
        connect(&list, &QAbstractItemModel::layoutChanged, this, [&] { layouts++; });
        QCOMPARE(rowText(&list, -1), QString("Callsign|Last activity|Path"));
        QVERIFY(!list.headerData(0, Qt::Vertical).isValid()); // rows carry no header text
        Station *upper = list.append("DL1ABC-5");
        Station *lower = list.append("dl1abc-5");
        QVERIFY(list.get("DL1ABC-5") == upper);
        QVERIFY(list.get("dl1abc-5") == lower);
        QVERIFY(!list.get("Dl1abc-5"));
        QVERIFY(list.get(1) == lower);
        QVERIFY(!list.get(2));
        QVERIFY(!list.get(-1));
        QVERIFY(!list.getExtensionModel(2));
        QVERIFY(!list.getExtensionModel(-1));

        QStandardItemModel *properties = upper->getExtensionModel();
        QCOMPARE(rowText(properties, -1), QString("Property|Value"));
        upper->update(QDateTime(QDate(2026, 11, 16), QTime(14, 4, 17)), extensionFrom("DL1ABC-5", 2),
            { "local", "tcp" });
        QCOMPARE(rowText(&list, 0), QString("DL1ABC-5|14:04:17 16.11.2026|local, tcp"));
        QCOMPARE(properties->item(0)->child(1, 1)->text(), QString("2")); // src: Seq. nr

        // A satellite message: a time, no extension content, no path.
        list.append("300234010753370")->updateTime(QDateTime(QDate(2027, 1, 2), QTime(3, 4, 5)));
        QCOMPARE(rowText(&list, 2), QString("300234010753370|03:04:05 02.01.2027|"));
        // append does not look for the callsign: a second row is listed, the first is found.
        Station *again = list.append("DL1ABC-5");
        QVERIFY(list.get(3) == again);
        QVERIFY(list.get("DL1ABC-5") == upper);

        // Ages are whole seconds, redrawn every second while shown.
        const QDateTime heard = QDateTime::currentDateTime().addSecs(-90061);
        upper->updateTime(heard);
        list.tickDeltaTime();
        list.setDeltaTime(true);
        QCOMPARE(layouts, 9);
        QCOMPARE(rowText(&list, 0), QString("DL1ABC-5|1 day(s) 01:01:01|local, tcp"));
        QElapsedTimer clock;
        clock.start();
        QTRY_COMPARE_WITH_TIMEOUT(layouts, 10, 3000);
        QVERIFY(clock.elapsed() > 700);
        list.setDeltaTime(false);
        QCOMPARE(rowText(&list, 0), "DL1ABC-5|" + heard.toString("hh:mm:ss dd.MM.yyyy") + "|local, tcp");
        QTest::qWait(1500);
        QCOMPARE(layouts, 11);
    }
};

QTEST_MAIN(tst_Models)
#include "tst_models.moc"
