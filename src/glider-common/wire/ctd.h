#ifndef CTD_H
#define CTD_H

#include <stdint.h>

/*
 * One sample of the CTD probe (message type 4), 15 bytes, little-endian:
 *
 *   offset  width  field           shown as
 *   0       16     sample_n        counter
 *   2       16     salinity        raw / 100
 *   4       16     temperature     raw / 1000 - 20
 *   6       24     pressure        raw / 100
 *   9       16     turbidity       raw / 100
 *   11      16     fluorescence    raw / 100
 *   13      16     sound_velocity  raw / 100 + 1300
 */
typedef struct __attribute__((packed)) {
    uint16_t sample_n;
    uint16_t salinity;
    uint16_t temperature;
    uint32_t pressure : 24;
    uint16_t turbidity;
    uint16_t fluorescence;
    uint16_t sound_velocity;
} ctd_sample_t;
static_assert(sizeof(ctd_sample_t) == 15, "ctd_sample_t is packed");

#endif
