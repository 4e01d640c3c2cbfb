#ifndef COMMANDSUMMARY_H
#define COMMANDSUMMARY_H

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

#include <stdint.h>

// What a command block sent to the vehicle says: each command's sequence
// number and its meaning in words, and which of them switch a unit off.
class CommandSummary
{
public:
    struct Command {
        uint8_t seq;
        uint8_t type;
        uint32_t arg;
        QString text;
        bool powerOff;
    };

    // Splits a block (2 + command_t, 10 + command_long_t, back to back).
    // A block that does not split gives no commands and valid() false.
    explicit CommandSummary(const QByteArray &block);

    bool valid() const;
    QVector<Command> commands() const;
    QVector<int> sequences() const;
    QStringList texts() const;
    // Texts of the commands that switch a power channel off.
    QStringList powerOffs() const;
    // Telemetry interval the block sets for a link ("Pell", "Iridium"), in
    // milliseconds; 0 when it sets none.
    qint64 telemetryInterval(const QString &link) const;

private:
    bool m_valid = false;
    QVector<Command> m_commands;
};

#endif
