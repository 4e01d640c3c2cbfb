#ifndef CRC_CCITT_H
#define CRC_CCITT_H

#include <stdint.h>

/*
 * CRC-16 of the modem framings: polynomial 0x1021 processed reflected
 * (table from 0x8408), preset 0xFFFF, result complemented. The check value
 * of the ASCII bytes "123456789" is 0x906E. Stored in frames little-endian.
 */

extern const uint16_t crc_ccitt_table[256];

/* One table step; no preset, no complement. Chain it from 0xFFFF and
 * complement the result to get crc_ccitt() over the same bytes. */
uint16_t crc_ccitt_byte(uint8_t data, uint16_t crc);

/* Complete CRC of len bytes (0xFFFF preset, final complement). Zero bytes
 * give 0x0000. Never fails. */
uint16_t crc_ccitt(const uint8_t *data, uint16_t len);

#endif
