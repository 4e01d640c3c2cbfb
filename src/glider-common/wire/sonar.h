#ifndef SONAR_H
#define SONAR_H

#include <stdint.h>

/*
 * Sonar command byte, as sent in CMD_SONAR / CMD_SONAR_AUTO and reported in
 * sonar_report_t.command:
 *
 *   bits  meaning
 *   7     1 active command; 0 sleep (bits 0-3 zero) or none
 *   6     mode, index into STR_PING_RUN
 *   4-5   program kind, index into STR_STEP_SEQ_ENS (3 unused)
 *   0-3   program number 0..15
 */
#define SONAR_CMD_ACTIVE 0x80
#define SONAR_CMD_RUN 0x40
#define SONAR_CMD_KIND_SHIFT 4
#define SONAR_CMD_PROGRAM_MASK 0x0F
#define SONAR_CMD_SLEEP 0x00

extern const char *const STR_PING_RUN[2];
extern const char *const STR_STEP_SEQ_ENS[4];
/* Indexed by sonar_report_t.retstate; only 0 and 1 are valid. */
extern const char *const SONAR_STR_RETSTATE[2];

/*
 * Writes the text of a sonar command byte into buffer (size bytes, always
 * NUL-terminated when size > 0): "RUN SEQUENCE 3" for an active command,
 * "SLEEP" for sleep. Returns the length of the full text, which exceeds
 * size - 1 when it was cut. Returns 0 and writes nothing for a byte with
 * bit 7 clear and a non-zero program number.
 */
uint16_t sonar_print_command(char *buffer, uint16_t size, uint8_t command);

#endif
