#include "vehicle_payload.h"

#include <stdio.h>
#include <string.h>

#include "sonar.h"

int vehicle_payload_split(const uint8_t *data, size_t len, vehicle_subpacket_t *out, int max)
{
    if (max < 0 || (len != 0 && (data == nullptr || out == nullptr)))
        return -1;
    int count = 0;
    size_t pos = 0;
    while (pos < len) {
        const uint8_t type = data[pos];
        if (type >= MSG_TYPES || count == max)
            return -1;
        const size_t size = SIZES[type];
        if (len - pos < size + 1)
            return -1;
        out[count++] = { type, data + pos + 1 };
        pos += size + 1;
    }
    return count;
}

bool vehicle_command_fields(const vehicle_subpacket_t *sub, uint8_t *seq, uint8_t *type, uint32_t *arg)
{
    if (sub == nullptr || seq == nullptr || type == nullptr || arg == nullptr)
        return false;
    if (sub->type == MSG_COMMAND) {
        command_t cmd;
        memcpy(&cmd, sub->record, sizeof(cmd));
        *seq = cmd.cmd_seq;
        *type = cmd.type;
        *arg = cmd.arg;
        return true;
    }
    if (sub->type == MSG_COMMAND_LONG) {
        command_long_t cmd;
        memcpy(&cmd, sub->record, sizeof(cmd));
        *seq = cmd.cmd_seq;
        *type = cmd.type;
        *arg = cmd.arg;
        return true;
    }
    return false;
}

int vehicle_interval_text(char *buffer, size_t size, uint8_t code)
{
    if (buffer == nullptr || size == 0)
        return 0;
    if (code <= 60)
        return snprintf(buffer, size, "%u s", unsigned(code));
    if (code <= 120)
        return snprintf(buffer, size, "%u min", unsigned(code - 60));
    return snprintf(buffer, size, "%u h", unsigned(code - 120));
}

namespace
{

const char *linkName(uint32_t link)
{
    return link == 0 ? "Pell" : link == 1 ? "Iridium" : "?";
}

const char *channelName(uint32_t arg)
{
    switch (arg & 0xF0) {
    case POWER_CTD:
        return "CTD";
    case POWER_SONAR:
        return "Sonar";
    case POWER_PELL:
        return "Pell";
    case POWER_IRIDIUM:
        return "Iridium";
    default:
        return "unknown channel";
    }
}

const char *datastoreName(uint32_t arg)
{
    static const char *const names[] = { "open", "flush", "close", "clear flag" };
    const uint8_t action = uint8_t(arg & 0xFF); // first byte of datastore_action
    return action < 4 ? names[action] : "unknown action";
}

// Names of the telemetry mask bits, comma separated.
int maskText(char *buffer, size_t size, uint32_t mask)
{
    static const struct {
        uint32_t bit;
        const char *name;
    } bits[] = { { TM_HOUSEKEEPING, "housekeeping" }, { TM_CTD, "CTD" }, { TM_SONAR_REPORT, "sonar report" },
        { TM_HOUSEKEEPING2, "housekeeping 2" }, { TM_O2, "O2" }, { TM_PCO2, "pCO2" }, { TM_LIGHT, "light" },
        { TM_PTH, "PTH" }, { TM_SONAR_WCOL, "sonar water column" }, { TM_POSTIME, "pos/time" } };
    int total = 0;
    for (const auto &b : bits) {
        if (!(mask & b.bit))
            continue;
        const size_t used = size_t(total) < size ? size_t(total) : size;
        total += snprintf(buffer + used, size - used, "%s%s", total ? ", " : "", b.name);
    }
    if (total == 0)
        total = snprintf(buffer, size, "none");
    return total;
}

int sonarText(char *buffer, size_t size, const char *prefix, uint8_t command)
{
    char text[32] = "";
    if (sonar_print_command(text, sizeof(text), command) == 0)
        snprintf(text, sizeof(text), "0x%02x", unsigned(command));
    return snprintf(buffer, size, "%s %s", prefix, text);
}

int rateText(char *buffer, size_t size, const char *what, uint32_t arg)
{
    char interval[16];
    vehicle_interval_text(interval, sizeof(interval), uint8_t(arg));
    return snprintf(buffer, size, "%s %s", what, interval);
}

} // namespace

int vehicle_command_text(char *buffer, size_t size, uint8_t type, uint32_t arg)
{
    if (buffer == nullptr || size == 0)
        return 0;
    switch (type) {
    case CMD_TELEMETRY_REQUEST:
        return snprintf(buffer, size, "telemetry request %s", linkName(arg));
    case CMD_TELEMETRY_RATE_PELL:
        return rateText(buffer, size, "telemetry rate Pell", arg);
    case CMD_TELEMETRY_RATE_IRIDIUM:
        return rateText(buffer, size, "telemetry rate Iridium", arg);
    case CMD_POWER:
        return snprintf(buffer, size, "power %s %s", channelName(arg), (arg & 1) ? "on" : "off");
    case CMD_SONAR:
        return sonarText(buffer, size, "sonar", uint8_t(arg));
    case CMD_TELEMETRY_MESSAGES_PELL:
    case CMD_TELEMETRY_MESSAGES_IRIDIUM: {
        const int head = snprintf(buffer, size,
            "telemetry messages %s: ", type == CMD_TELEMETRY_MESSAGES_PELL ? "Pell" : "Iridium");
        const size_t used = size_t(head) < size ? size_t(head) : size - 1;
        return head + maskText(buffer + used, size - used, arg);
    }
    case CMD_SONAR_SCRIPT:
        return snprintf(buffer, size, "sonar script %u", unsigned(arg));
    case CMD_DATASTORE:
        return snprintf(buffer, size, "datastore %s", datastoreName(arg));
    case CMD_SONAR_WCOL_MAX:
        return snprintf(buffer, size, "sonar water columns per SBD %u", unsigned(arg));
    case CMD_SONAR_AUTO:
        return sonarText(buffer, size, "sonar auto", uint8_t(arg));
    case CMD_SONAR_AUTO_RATE:
        return rateText(buffer, size, "sonar auto rate", arg);
    default:
        return snprintf(buffer, size, "command type %u arg %u", unsigned(type), unsigned(arg));
    }
}

bool vehicle_command_is_power_off(uint8_t type, uint32_t arg)
{
    return type == CMD_POWER && (arg & 1) == 0;
}
