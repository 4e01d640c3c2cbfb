#include "commandsummary.h"

#include "vehicle_payload.h"

namespace
{
// A radio block is at most 208 bytes, so at most 69 short commands; the
// satellite link takes larger blocks.
const int MaxCommands = 512;
}

CommandSummary::CommandSummary(const QByteArray &block)
{
    QVector<vehicle_subpacket_t> subs(MaxCommands);
    const int count = vehicle_payload_split(
        reinterpret_cast<const uint8_t *>(block.constData()), size_t(block.size()), subs.data(), MaxCommands);
    if (count < 0)
        return;
    m_valid = true;
    for (int i = 0; i < count; i++) {
        Command cmd {};
        if (!vehicle_command_fields(&subs.at(i), &cmd.seq, &cmd.type, &cmd.arg)) {
            m_valid = false; // telemetry inside a command block: not ours
            continue;
        }
        char text[160];
        vehicle_command_text(text, sizeof(text), cmd.type, cmd.arg);
        cmd.text = QString::fromUtf8(text);
        cmd.powerOff = vehicle_command_is_power_off(cmd.type, cmd.arg);
        m_commands << cmd;
    }
}

bool CommandSummary::valid() const
{
    return m_valid;
}

QVector<CommandSummary::Command> CommandSummary::commands() const
{
    return m_commands;
}

QVector<int> CommandSummary::sequences() const
{
    QVector<int> seqs;
    for (const Command &cmd : m_commands)
        seqs << cmd.seq;
    return seqs;
}

QStringList CommandSummary::texts() const
{
    QStringList out;
    for (const Command &cmd : m_commands)
        out << cmd.text;
    return out;
}

QStringList CommandSummary::powerOffs() const
{
    QStringList out;
    for (const Command &cmd : m_commands) {
        if (cmd.powerOff)
            out << cmd.text;
    }
    return out;
}

qint64 CommandSummary::telemetryInterval(const QString &link) const
{
    const uint8_t type = link == "Pell" ? CMD_TELEMETRY_RATE_PELL : CMD_TELEMETRY_RATE_IRIDIUM;
    qint64 interval = 0;
    for (const Command &cmd : m_commands) {
        if (cmd.type == type)
            interval = cmd_interval_to_msec(uint8_t(cmd.arg));
    }
    return interval;
}
