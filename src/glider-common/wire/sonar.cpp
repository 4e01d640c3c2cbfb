#include "sonar.h"

#include <stdio.h>

const char *const STR_PING_RUN[2] = { "PING", "RUN" };
const char *const STR_STEP_SEQ_ENS[4] = { "STEP", "SEQUENCE", "ENSEMBLE", "" };
const char *const SONAR_STR_RETSTATE[2] = { "STARTED", "COMPLETE" };

uint16_t sonar_print_command(char *buffer, uint16_t size, uint8_t command)
{
    int n = 0;
    if (command & SONAR_CMD_ACTIVE) {
        n = snprintf(buffer, size, "%s %s %u", STR_PING_RUN[(command & SONAR_CMD_RUN) ? 1 : 0],
            STR_STEP_SEQ_ENS[(command >> SONAR_CMD_KIND_SHIFT) & 3],
            unsigned(command & SONAR_CMD_PROGRAM_MASK));
    } else if ((command & SONAR_CMD_PROGRAM_MASK) == 0) {
        n = snprintf(buffer, size, "SLEEP");
    }
    return n > 0 ? uint16_t(n) : 0;
}
