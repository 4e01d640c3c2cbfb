#include <QtTest>

#include <string.h>

#include "varda_packets.h"

class tst_VardaPackets : public QObject
{
    Q_OBJECT
private slots:
    void rxInitMarksUnknownValues();
    void txInitClearsHeaderOnly();
};

void tst_VardaPackets::rxInitMarksUnknownValues()
{
    rx_pkt_t p;
    memset(&p, 0xAA, sizeof p);
    rx_pkt_init(&p);
    QCOMPARE(p.pl_len, uint16_t(0));
    QCOMPARE(p.varda_flags, uint8_t(0));
    QCOMPARE(p.errors, uint8_t(0));
    QCOMPARE(p.rssi, uint8_t(255));
    QCOMPARE(p.noise, uint8_t(255));
    QCOMPARE(p.timestamp_toh_us, uint32_t(0xFFFFFFFF));
    // Deliberately left alone.
    QCOMPARE(p.rs_size_nr, uint8_t(0xAA));
    QCOMPARE(p.timestamp_raw, uint32_t(0xAAAAAAAA));
    QCOMPARE(p.pl[0], uint8_t(0xAA));
    QCOMPARE(p.pl[VRD_PKT_BUFFER - 1], uint8_t(0xAA));
}

void tst_VardaPackets::txInitClearsHeaderOnly()
{
    tx_pkt_t p;
    memset(&p, 0xAA, sizeof p);
    tx_pkt_init(&p);
    QCOMPARE(p.pl_len, uint16_t(0));
    QCOMPARE(p.priority, uint8_t(0));
    QCOMPARE(p.varda_flags, uint8_t(0));
    QCOMPARE(p.pl[0], uint8_t(0xAA));
    QCOMPARE(p.pl[VRD_PKT_BUFFER - 1], uint8_t(0xAA));
}

QTEST_APPLESS_MAIN(tst_VardaPackets)
#include "tst_varda_packets.moc"
