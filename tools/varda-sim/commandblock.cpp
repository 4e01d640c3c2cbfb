#include "commandblock.h"

#include <cstring>

#include "telemetry.h"

namespace
{
template <typename Record> bool take(const QByteArray &block, int *pos, Record *record)
{
    if (block.size() - *pos < int(sizeof(Record)))
        return false;
    memcpy(record, block.constData() + *pos, sizeof(Record));
    *pos += int(sizeof(Record));
    return true;
}

// One entry at *pos: its message type, then the record of that type.
bool takeCommand(const QByteArray &block, int *pos, VehicleCommand *cmd)
{
    const quint8 msgType = quint8(block.at((*pos)++));
    if (msgType == MSG_COMMAND) {
        command_t rec;
        if (!take(block, pos, &rec))
            return false;
        *cmd = VehicleCommand { rec.cmd_seq, rec.type, rec.arg };
        return true;
    }
    if (msgType == MSG_COMMAND_LONG) {
        command_long_t rec;
        if (!take(block, pos, &rec))
            return false;
        *cmd = VehicleCommand { rec.cmd_seq, rec.type, rec.arg };
        return true;
    }
    return false;
}
}

bool CommandBlock::parse(const QByteArray &block, QVector<VehicleCommand> *commands)
{
    commands->clear();
    int pos = 0;
    while (pos < block.size()) {
        VehicleCommand cmd;
        if (!takeCommand(block, &pos, &cmd)) {
            commands->clear();
            return false;
        }
        commands->append(cmd);
    }
    return !commands->isEmpty();
}
