#include "varda_packets.h"

void rx_pkt_init(rx_pkt_t *p)
{
    p->pl_len = 0;
    p->varda_flags = 0;
    p->rssi = 255;
    p->noise = 255;
    p->errors = 0;
    p->timestamp_toh_us = 0xFFFFFFFF;
}

void tx_pkt_init(tx_pkt_t *p)
{
    p->pl_len = 0;
    p->priority = 0;
    p->varda_flags = 0;
}
