#include "varda_packets.h"

void rx_pkt_init(rx_pkt_t *p)
{
    p->pl_len = 0;
    p->varda_flags = 0;
    p->rssi = VRD_RSSI_UNKNOWN;
    p->noise = VRD_RSSI_UNKNOWN;
    p->errors = 0;
    p->timestamp_toh_us = VRD_TOH_UNKNOWN;
}

void tx_pkt_init(tx_pkt_t *p)
{
    p->pl_len = 0;
    p->priority = 0;
    p->varda_flags = 0;
}
