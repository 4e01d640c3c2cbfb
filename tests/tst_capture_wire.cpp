#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include "blockdecoder.h"
#include "blockformatter.h"
#include "capturefile.h"
#include "capturewriter.h"
#include "streamsegmenter.h"
#include "varda_extension.h"
#include "varda_spp_host.h"

namespace
{
QByteArray frame(uint8_t type, const QByteArray &payload)
{
    vrd_spphdr_t hdr;
    varda_spp_fill_header(
        &hdr, type, reinterpret_cast<const uint8_t *>(payload.constData()), uint8_t(payload.size()));
    return QByteArray(reinterpret_cast<const char *>(&hdr), sizeof hdr) + payload;
}

QByteArray badCrc(QByteArray f)
{
    f[f.size() - 1] = char(f.at(f.size() - 1) ^ 0x01);
    return f;
}

// src ALPHA-1 seq 9 and a text, behind a receive header with rssi -87 dBm
// and unknown noise.
QByteArray received()
{
    uint8_t call[VRD_CALLSIGN_ENC_LEN];
    vrd_ext_encode_callsign(call, "ALPHA-1");
    QByteArray payload = QByteArray::fromHex("40e20100"
                                             "ff"
                                             "71"
                                             "00"
                                             "01");
    payload += char(VRD_EXT_SRC) + QByteArray(1, 7) + QByteArray(reinterpret_cast<const char *>(call), 6)
        + char(9);
    payload += char(VRD_EXT_TEXT) + QByteArray(1, 2) + QByteArray("ok");
    return frame(SPP_TYPE_RX, payload);
}

QList<QByteArray> segment(const QByteArray &stream, int piece)
{
    QList<QByteArray> blocks;
    StreamSegmenter segmenter([&blocks](const uint8_t *d, size_t n) {
        blocks.append(QByteArray(reinterpret_cast<const char *>(d), int(n)));
    });
    for (int at = 0; at < stream.size(); at += piece)
        segmenter.feed(reinterpret_cast<const uint8_t *>(stream.constData()) + at,
            size_t(qMin(piece, stream.size() - at)));
    segmenter.finish();
    return blocks;
}

QByteArray readAll(const QString &path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

void writeAll(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    file.open(QIODevice::WriteOnly | QIODevice::Truncate);
    file.write(bytes);
}
} // namespace

class TestCaptureWire : public QObject
{
    Q_OBJECT
private slots:
    void segmenter_data();
    void segmenter();
    void roundTrip();
    void damage_data();
    void damage();
    void decode_data();
    void decode();
    void jsonLine();
    void csvLine();

private:
    QTemporaryDir m_dir;
};

void TestCaptureWire::segmenter_data()
{
    QTest::addColumn<QList<QByteArray>>("blocks");
    const QByteArray good = frame(SPP_TYPE_CMD, "ok");
    const QByteArray zero = frame(SPP_TYPE_CMD, QByteArray()) + QByteArray(255, 'x') + QByteArray("y");
    QTest::newRow("one frame") << QList<QByteArray> { good };
    QTest::newRow("noise around a frame") << QList<QByteArray> { "ab\r\n", good, "zz" };
    QTest::newRow("bad CRC, then good") << QList<QByteArray> { badCrc(good), good };
    QTest::newRow("start byte inside a frame is data")
        << QList<QByteArray> { frame(SPP_TYPE_CMD, "$$$"), good };
    QTest::newRow("frame cut off at the end") << QList<QByteArray> { good, good.left(4) };
    QTest::newRow("zero-length frame swallows 256 bytes") << QList<QByteArray> { zero, good };
}

// The blocks are the stream again, cut the same way whatever the reads.
void TestCaptureWire::segmenter()
{
    QFETCH(QList<QByteArray>, blocks);
    const QByteArray stream = blocks.join();
    for (int piece : { 1, 3, stream.size() }) {
        QCOMPARE(segment(stream, piece).join(), stream);
        // Noise may come in several pieces; frames never.
        const QList<QByteArray> cut = segment(stream, piece);
        for (const QByteArray &expected : blocks) {
            if (BlockDecoder::isFrame(
                    reinterpret_cast<const uint8_t *>(expected.constData()), size_t(expected.size())))
                QVERIFY2(cut.contains(expected), qPrintable(expected.toHex()));
        }
    }
}

void TestCaptureWire::roundTrip()
{
    const QString path = m_dir.filePath("round.pcapng");
    CaptureWriter writer;
    QVERIFY(writer.open(path.toStdString(), "test 1.0"));
    QCOMPARE(writer.addInterface(PCAPNG_LINK_MODEM, "tcp:127.0.0.1:10004"), 0);
    QCOMPARE(writer.addInterface(PCAPNG_LINK_GATEWAY, "gateway:example:10020"), 1);
    const QByteArray odd("\x24\x01\x02", 3); // not a multiple of 4: padded
    QVERIFY(writer.writePacket(
        0, 1700000000123456ull, PCAPNG_DIR_IN, reinterpret_cast<const uint8_t *>(odd.data()), 3));
    QVERIFY(writer.writePacket(
        1, 1700000000999999ull, PCAPNG_DIR_OUT, reinterpret_cast<const uint8_t *>("abcdefgh"), 8));
    QVERIFY(!writer.writePacket(2, 0, PCAPNG_DIR_IN, nullptr, 0));
    writer.close();

    QList<CaptureRecord> records;
    QStringList links;
    CaptureFile file;
    QVERIFY(file.read(path.toStdString(), [&](const CaptureRecord &r, const CaptureInterface &link) {
        records.append(r);
        links.append(QString::fromStdString(link.name));
    }));
    QCOMPARE(records.size(), 2);
    QCOMPARE(links, QStringList({ "tcp:127.0.0.1:10004", "gateway:example:10020" }));
    QCOMPARE(records[0].time_us, 1700000000123456ull);
    QCOMPARE(int(records[0].direction), int(PCAPNG_DIR_IN));
    QCOMPARE(QByteArray(reinterpret_cast<const char *>(records[0].data.data()), 3), odd);
    QCOMPARE(int(records[1].direction), int(PCAPNG_DIR_OUT));
    QCOMPARE(records[1].data.size(), size_t(8));
}

void TestCaptureWire::damage_data()
{
    QTest::addColumn<int>("cut"); // bytes kept, -1 = all
    QTest::addColumn<int>("flip"); // offset of a byte set to 0xFF, -1 = none
    QTest::addColumn<int>("packets"); // read before the damage
    QTest::addColumn<QString>("error");
    QTest::addColumn<int>("offset"); // index of the damaged block, -1 = none
    // Blocks: 0 section header, 1 interface, 2-4 packets.
    QTest::newRow("clean") << -1 << -1 << 3 << "" << -1;
    QTest::newRow("cut in the last packet") << -5 << -1 << 2 << "truncated block" << 4;
    QTest::newRow("cut in a length field") << -30 << -1 << 2 << "truncated block" << 4;
    QTest::newRow("empty file") << 0 << -1 << 0 << "not a capture file" << 0;
    QTest::newRow("not pcapng") << -1 << 0 << 0 << "not a capture file" << 0;
    QTest::newRow("length of a packet") << -1 << 2 << 1 << "corrupt block" << 3;
    QTest::newRow("trailing length") << -1 << 3 << 0 << "corrupt block" << 2;
}

// flip and cut name places relative to the blocks: flip 2 hits the length
// field of block 3 (no longer a multiple of 4), flip 3 the trailing length of block 2.
void TestCaptureWire::damage()
{
    QFETCH(int, cut);
    QFETCH(int, flip);
    QFETCH(int, packets);
    QFETCH(QString, error);
    QFETCH(int, offset);
    const QString clean = m_dir.filePath("clean.pcapng");
    CaptureWriter writer;
    QVERIFY(writer.open(clean.toStdString(), "test"));
    QList<int> starts = { 0, int(writer.size()) };
    writer.addInterface(PCAPNG_LINK_MODEM, "tcp:x:1");
    for (int i = 0; i < 3; ++i) {
        starts.append(int(writer.size()));
        writer.writePacket(0, 0, PCAPNG_DIR_IN, reinterpret_cast<const uint8_t *>("frame-bytes"), 11);
    }
    writer.close();
    QByteArray bytes = readAll(clean);
    if (cut >= 0)
        bytes.truncate(cut);
    else if (cut < -1)
        bytes.chop(-cut);
    if (flip == 0)
        bytes[0] = char(0xFF);
    else if (flip == 2)
        bytes[starts[3] + 4] = char(0x7F);
    else if (flip == 3)
        bytes[starts[3] - 2] = char(0x7F);
    const QString damaged = m_dir.filePath("damaged.pcapng");
    writeAll(damaged, bytes);

    int read = 0;
    CaptureFile file;
    const bool ok = file.read(
        damaged.toStdString(), [&read](const CaptureRecord &, const CaptureInterface &) { read++; });
    QCOMPARE(ok, error.isEmpty());
    QCOMPARE(read, packets);
    QCOMPARE(QString::fromStdString(file.error()), error);
    if (offset >= 0)
        QCOMPARE(int(file.errorOffset()), starts[offset]);
}

void TestCaptureWire::decode_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("crc"); // -1 absent, 0 bad, 1 good
    QTest::addColumn<QString>("src");
    QTest::addColumn<int>("rssi"); // 1 = absent
    QTest::addColumn<QString>("text");
    QTest::newRow("received packet") << received() << "frame" << 1 << "ALPHA-1" << -87 << "ok";
    QTest::newRow("bad CRC: header only") << badCrc(received()) << "frame" << 0 << "" << 1 << "";
    QTest::newRow("modem reply") << frame(SPP_TYPE_CMD, "v\xe9rsion") << "frame" << 1 << "" << 1
                                 << "v\u00e9rsion";
    QTest::newRow("cut frame") << received().left(20) << "noise" << -1 << "" << 1 << "";
    QTest::newRow("short rx payload") << frame(SPP_TYPE_RX, "abc") << "frame" << 1 << "" << 1 << "";
}

void TestCaptureWire::decode()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, kind);
    QFETCH(int, crc);
    QFETCH(QString, src);
    QFETCH(int, rssi);
    QFETCH(QString, text);
    DecodedBlock block;
    BlockDecoder::decodeModem(
        reinterpret_cast<const uint8_t *>(bytes.constData()), size_t(bytes.size()), &block);
    QCOMPARE(QString::fromStdString(block.kind), kind);
    QCOMPARE(block.crc_ok ? int(*block.crc_ok) : -1, crc);
    QCOMPARE(QString::fromStdString(block.src.value_or("")), src);
    QCOMPARE(block.rssi_dbm.value_or(1), rssi);
    QCOMPARE(QString::fromStdString(block.text.value_or("")), text);
    QVERIFY(!block.noise_dbm); // 255 in every header here
}

void TestCaptureWire::jsonLine()
{
    const QByteArray bytes = received();
    CaptureRecord record;
    record.time_us = 1700000000123456ull; // 2023-11-14T22:13:20.123Z
    record.direction = PCAPNG_DIR_IN;
    record.data.assign(bytes.begin(), bytes.end());
    CaptureInterface link;
    link.link_type = PCAPNG_LINK_MODEM;
    link.name = "tcp:127.0.0.1:10004";
    const std::string line = BlockFormatter(BlockFormatter::Jsonl).line(BlockDecoder::decode(record, link));
    QCOMPARE(QString::fromStdString(line),
        QString("{\"time\":\"2023-11-14T22:13:20.123Z\",\"link\":\"tcp:127.0.0.1:10004\",\"dir\":\"in\","
                "\"kind\":\"frame\",\"crc_ok\":true,\"spp_type\":0,\"len\":%1,\"rssi_dbm\":-87,\"flags\":1,"
                "\"src\":\"ALPHA-1\",\"seq\":9,\"subpackets\":[\"src\",\"text\"],\"text\":\"ok\",\"hex\":\"%"
                "2\"}\n")
            .arg(bytes.size() - 5)
            .arg(QString(bytes.toHex())));
}

void TestCaptureWire::csvLine()
{
    DecodedBlock gateway;
    gateway.dir = PCAPNG_DIR_IN;
    const QByteArray message = QByteArray::fromHex("18000000a1680600") + "300234010203040" + "\"a,b\"";
    BlockDecoder::decodeGateway(reinterpret_cast<const uint8_t *>(message.constData()),
        size_t(message.size()), PCAPNG_DIR_IN, &gateway);
    gateway.bytes.assign(message.begin(), message.end());
    const BlockFormatter csv(BlockFormatter::Csv);
    QCOMPARE(QString::fromStdString(csv.header()),
        QString(
            "time,link,dir,kind,crc_ok,spp_type,len,rssi_dbm,noise_dbm,flags,src,seq,dest,subpackets,text,"
            "gateway_type,imei,callsign,hex\n"));
    QCOMPARE(QString::fromStdString(csv.line(gateway)),
        QString("1970-01-01T00:00:00.000Z,,in,gateway,,,24,,,,,,,,,420001,300234010203040,,%1\n")
            .arg(QString(message.toHex())));
    gateway.text = "say \"hi\", twice";
    QVERIFY(csv.line(gateway).find(",\"say \"\"hi\"\", twice\",") != std::string::npos);
}

QTEST_GUILESS_MAIN(TestCaptureWire)
#include "tst_capture_wire.moc"
