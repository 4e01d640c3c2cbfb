#ifndef COMMANDBLOCK_H
#define COMMANDBLOCK_H

#include <QByteArray>
#include <QVector>

// One command of a block as the vehicle runs it; short and long commands
// alike (record layouts in telemetry.h).
struct VehicleCommand {
    quint8 seq = 0;
    quint8 type = 0; // command_type_t
    quint32 arg = 0;
};

// Splits a command block: entries back to back, each the message type
// MSG_COMMAND followed by a command_t, or MSG_COMMAND_LONG followed by a
// command_long_t. No header, count or checksum.
class CommandBlock
{
public:
    // False, with commands left empty, when the block is empty, holds
    // another message type or ends inside a record: the vehicle runs a
    // block whole or not at all.
    static bool parse(const QByteArray &block, QVector<VehicleCommand> *commands);
};

#endif
