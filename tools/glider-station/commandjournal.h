#ifndef COMMANDJOURNAL_H
#define COMMANDJOURNAL_H

#include <QAbstractTableModel>
#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>

#include <stdint.h>

// The fate of every command block sent to the vehicle, newest first.
//
//   held ----> sent ----> confirmed        (housekeeping reports its number)
//    |  \        \------> not confirmed    (deadline of the link passed;
//    |   \                   |              a late report still confirms)
//    |    \-> not sent       \----------> confirmed
//    \------> cancelled    (operator said no)
//
// Every change appends the entry's whole row to a CSV file (header line,
// ISO 8601 UTC times); reading the file back keeps each entry's last row,
// so the journal spans restarts.
class CommandJournal : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum State { Held, Sent, Confirmed, NotConfirmed, NotSent, Cancelled };
    enum Column { TimeColumn, SeqColumn, CommandColumn, LinkColumn, BytesColumn, StateColumn, ColumnCount };

    struct Entry {
        int id = 0;
        QDateTime sent; // UTC, when the panel emitted the block
        QVector<int> seqs;
        QStringList commands;
        QString link;
        QByteArray block;
        State state = Held;
        QDateTime stateTime; // UTC, when the state was reached
        QString stateLink; // link of the confirming housekeeping
    };

    explicit CommandJournal(const QString &path, QObject *parent = nullptr);

    QString path() const;
    // Reads the file back. Returns the number of entries, -1 when the file
    // exists but cannot be read. Entries still held when the station stopped
    // come back as not sent.
    int load();

    // Records a block emitted for link; returns the entry's id.
    int add(const QByteArray &block, const QString &link, State state, const QDateTime &now);
    void setState(int id, State state, const QDateTime &at);
    void setLink(int id, const QString &link);
    // A housekeeping record reported seq as the last command executed:
    // sent (or overdue) entries holding it become confirmed. Returns how many.
    int confirm(uint8_t seq, const QDateTime &at, const QString &link);
    // Sent entries whose link deadline has passed become not confirmed.
    int expire(const QDateTime &now);
    void setDeadline(const QString &link, qint64 msecs);
    qint64 deadline(const QString &link) const;

    const Entry *entry(int id) const;
    const Entry &entryAt(int row) const; // row 0 is the newest
    int rowOf(int id) const;
    int count() const;
    static QString stateName(State state);
    // State in words with its time and link ("confirmed 12:01:02 over Pell").
    static QString stateText(const Entry &entry);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

signals:
    void stateChanged(int id, CommandJournal::State state);

private:
    void store(const Entry &entry);
    void changed(int index);
    bool parseRow(const QStringList &fields, Entry *entry) const;
    QVariant display(const Entry &entry, int column) const;

    QString m_path;
    QVector<Entry> m_entries; // oldest first; row 0 shows the last one
    QHash<QString, qint64> m_deadlines;
    int m_nextId = 1;
};

#endif
