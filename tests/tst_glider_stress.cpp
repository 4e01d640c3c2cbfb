#include <QAbstractItemModel>
#include <QFile>
#include <QTableView>
#include <QtTest>

#include "glider_harness.h"

// The vehicle panel under a long stream of payloads: the table keeps one
// row per property and each log file gains exactly one line per record.

namespace
{

const int PAYLOADS = 100000;

// Lines of a log file by record kind (the text before the first ";").
QMap<QString, int> linesByKind(const QString &path)
{
    QFile file(path);
    QMap<QString, int> kinds;
    if (!file.open(QIODevice::ReadOnly))
        return kinds;
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (!line.isEmpty())
            kinds[QString::fromLatin1(line.left(line.indexOf(';')))]++;
    }
    return kinds;
}

} // namespace

class TestGliderStress : public QObject
{
    Q_OBJECT
private slots:
    void hundredThousandPayloads();
};

void TestGliderStress::hundredThousandPayloads()
{
    // A status record and a sonar column describer: one line for each file.
    const QByteArray payload = bytes("09 4C 64 65 20 F1 00 96 80 51 01 00 07 08 01 05 3C 9A");
    GliderInTempHome panel;
    // Three debug lines a payload: the test log would set the pace.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    const QAbstractItemModel *table = panel.glider()->findChild<QTableView *>("telemetryTableView")->model();
    const auto feed = [&panel, &payload] {
        panel.glider()->handleData(
            reinterpret_cast<const uint8_t *>(payload.constData()), uint16_t(payload.size()));
    };

    feed();
    const int rows = table->rowCount();
    QCOMPARE(rows, 17);
    for (int i = 1; i < PAYLOADS; i++)
        feed();
    qInstallMessageHandler(nullptr);

    QCOMPARE(table->rowCount(), rows);
    const QMap<QString, int> telemetry { { "housekeeping2", PAYLOADS } };
    QCOMPARE(linesByKind(panel.logDir() + "/telemetry.txt"), telemetry);
    const QMap<QString, int> events { { "sonar_desc", PAYLOADS } };
    QCOMPARE(linesByKind(panel.logDir() + "/event.txt"), events);
}

QTEST_MAIN(TestGliderStress)
#include "tst_glider_stress.moc"
