#ifndef VEHICLE_PAYLOAD_H
#define VEHICLE_PAYLOAD_H

#include <stddef.h>
#include <stdint.h>

#include "telemetry.h"

/*
 * One sub-packet of a vehicle payload (layout in telemetry.h): its message
 * type and its first record byte, inside the caller's buffer (not copied,
 * possibly unaligned). Command blocks sent to the vehicle are split the same
 * way: 2 + command_t, 10 + command_long_t.
 */
typedef struct {
    uint8_t type;
    const uint8_t *record;
} vehicle_subpacket_t;

/*
 * Splits data (len bytes) into at most max sub-packets written to out.
 * Returns their count, 0 for an empty payload. Returns -1, with out partly
 * written, when
 *   - a type byte is above the last known type (MSG_TYPES - 1),
 *   - a record runs past the end of the payload,
 *   - the payload holds more than max sub-packets,
 *   - data or out is null while len is not 0, or max is negative.
 * Never reads outside data[0..len).
 */
int vehicle_payload_split(const uint8_t *data, size_t len, vehicle_subpacket_t *out, int max);

/*
 * Command type and argument of a COMMAND or COMMAND_LONG sub-packet. Returns
 * false (and leaves the outputs alone) for any other type or null pointers.
 */
bool vehicle_command_fields(const vehicle_subpacket_t *sub, uint8_t *seq, uint8_t *type, uint32_t *arg);

/*
 * The command in words, as a pilot reads it ("power Pell off", "telemetry
 * rate Iridium 30 min", "sonar RUN ENSEMBLE 5"), into buffer (size bytes,
 * NUL-terminated when size > 0). Returns the length of the full text, which
 * exceeds size - 1 when it was cut; 0 for a null buffer or size 0.
 */
int vehicle_command_text(char *buffer, size_t size, uint8_t type, uint32_t arg);

/* Interval code in words: "30 s", "30 min", "2 h". Same return rule. */
int vehicle_interval_text(char *buffer, size_t size, uint8_t code);

/* True for a CMD_POWER that switches a channel off. */
bool vehicle_command_is_power_off(uint8_t type, uint32_t arg);

#endif
