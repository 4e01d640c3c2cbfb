#include "commandjournal.h"

#include <QBrush>
#include <QColor>
#include <QFile>
#include <QHash>
#include <QTextStream>

#include <algorithm>
#include <iterator>

#include "commandsummary.h"
#include "csvline.h"

namespace
{
const QStringList Header { "id", "time_sent_utc", "seq", "commands", "link", "bytes", "state",
    "state_time_utc", "state_link" };
const char *const StateNames[] = { "held", "sent", "confirmed", "not confirmed", "not sent", "cancelled" };
const qint64 DefaultPellDeadline = 60 * 1000;
const qint64 DefaultIridiumDeadline = 30 * 60 * 1000;
// Sequence numbers repeat every 256 commands: an old entry is never
// confirmed by a report about a new command of the same number.
const qint64 ConfirmWindowMs = 24 * 3600 * 1000;

QString isoUtc(const QDateTime &time)
{
    return time.isValid() ? time.toUTC().toString(Qt::ISODate) : QString();
}

QDateTime fromIso(const QString &text)
{
    return text.isEmpty() ? QDateTime() : QDateTime::fromString(text, Qt::ISODate).toUTC();
}

QString joinSeqs(const QVector<int> &seqs)
{
    QStringList out;
    for (int seq : seqs)
        out << QString::number(seq);
    return out.join(' ');
}
}

CommandJournal::CommandJournal(const QString &path, QObject *parent)
    : QAbstractTableModel(parent)
    , m_path(path)
{
    m_deadlines["Pell"] = DefaultPellDeadline;
    m_deadlines["Iridium"] = DefaultIridiumDeadline;
}

QString CommandJournal::path() const
{
    return m_path;
}

int CommandJournal::load()
{
    QFile file(m_path);
    if (!file.exists())
        return 0;
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return -1;
    QTextStream in(&file);
    in.setCodec("UTF-8");
    QVector<Entry> entries;
    QHash<int, int> index;
    QString line;
    while (in.readLineInto(&line)) {
        Entry entry;
        if (!parseRow(CsvLine::split(line), &entry))
            continue;
        if (entry.state == Held)
            entry.state = NotSent;
        if (index.contains(entry.id)) {
            entries[index.value(entry.id)] = entry;
        } else {
            index.insert(entry.id, entries.size());
            entries << entry;
        }
        m_nextId = std::max(m_nextId, entry.id + 1);
    }
    beginResetModel();
    m_entries = entries;
    endResetModel();
    return m_entries.size();
}

bool CommandJournal::parseRow(const QStringList &fields, Entry *entry) const
{
    if (fields.size() != Header.size())
        return false;
    bool ok = false;
    entry->id = fields.at(0).toInt(&ok);
    entry->sent = fromIso(fields.at(1));
    const int state
        = int(std::find(std::begin(StateNames), std::end(StateNames), fields.at(6)) - std::begin(StateNames));
    if (!ok || !entry->sent.isValid() || state >= int(std::size(StateNames)))
        return false;
    for (const QString &seq : fields.at(2).split(' ', Qt::SkipEmptyParts))
        entry->seqs << (seq.toInt() & 0xFF);
    entry->commands = fields.at(3).split("; ", Qt::SkipEmptyParts);
    entry->link = fields.at(4);
    entry->block = QByteArray::fromHex(fields.at(5).toLatin1());
    entry->state = State(state);
    entry->stateTime = fromIso(fields.at(7));
    entry->stateLink = fields.at(8);
    return true;
}

void CommandJournal::store(const Entry &entry)
{
    QFile file(m_path);
    const bool fresh = !file.exists() || file.size() == 0;
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text))
        return;
    QTextStream out(&file);
    out.setCodec("UTF-8");
    if (fresh)
        out << CsvLine::join(Header) << '\n';
    out << CsvLine::join({ QString::number(entry.id), isoUtc(entry.sent), joinSeqs(entry.seqs),
        entry.commands.join("; "), entry.link, QString::fromLatin1(entry.block.toHex()),
        StateNames[entry.state], isoUtc(entry.stateTime), entry.stateLink })
        << '\n';
}

int CommandJournal::add(const QByteArray &block, const QString &link, State state, const QDateTime &now)
{
    const CommandSummary summary(block);
    Entry entry;
    entry.id = m_nextId++;
    entry.sent = now.toUTC();
    entry.seqs = summary.sequences();
    entry.commands = summary.valid() ? summary.texts() : QStringList { tr("unreadable block") };
    entry.link = link;
    entry.block = block;
    entry.state = state;
    entry.stateTime = entry.sent;
    beginInsertRows(QModelIndex(), 0, 0);
    m_entries << entry;
    endInsertRows();
    store(entry);
    return entry.id;
}

void CommandJournal::setState(int id, State state, const QDateTime &at)
{
    const int row = rowOf(id);
    if (row < 0)
        return;
    Entry &entry = m_entries[m_entries.size() - 1 - row];
    entry.state = state;
    entry.stateTime = at.toUTC();
    changed(row);
}

void CommandJournal::setLink(int id, const QString &link)
{
    const int row = rowOf(id);
    if (row < 0)
        return;
    m_entries[m_entries.size() - 1 - row].link = link;
    changed(row);
}

void CommandJournal::changed(int row)
{
    const Entry &entry = m_entries.at(m_entries.size() - 1 - row);
    store(entry);
    emit dataChanged(index(row, 0), index(row, ColumnCount - 1));
    emit stateChanged(entry.id, entry.state);
}

int CommandJournal::confirm(uint8_t seq, const QDateTime &at, const QString &link)
{
    int confirmed = 0;
    for (int i = m_entries.size() - 1; i >= 0; i--) {
        Entry &entry = m_entries[i];
        if ((entry.state != Sent && entry.state != NotConfirmed) || !entry.seqs.contains(seq)
            || entry.sent.msecsTo(at) > ConfirmWindowMs)
            continue;
        entry.state = Confirmed;
        entry.stateTime = at.toUTC();
        entry.stateLink = link;
        changed(m_entries.size() - 1 - i);
        confirmed++;
    }
    return confirmed;
}

int CommandJournal::expire(const QDateTime &now)
{
    int expired = 0;
    for (int i = 0; i < m_entries.size(); i++) {
        Entry &entry = m_entries[i];
        if (entry.state != Sent || entry.sent.msecsTo(now) <= deadline(entry.link))
            continue;
        entry.state = NotConfirmed;
        entry.stateTime = now.toUTC();
        changed(m_entries.size() - 1 - i);
        expired++;
    }
    return expired;
}

void CommandJournal::setDeadline(const QString &link, qint64 msecs)
{
    m_deadlines[link] = msecs;
}

qint64 CommandJournal::deadline(const QString &link) const
{
    return m_deadlines.value(link, DefaultPellDeadline);
}

const CommandJournal::Entry *CommandJournal::entry(int id) const
{
    const int row = rowOf(id);
    return row < 0 ? nullptr : &m_entries.at(m_entries.size() - 1 - row);
}

const CommandJournal::Entry &CommandJournal::entryAt(int row) const
{
    return m_entries.at(m_entries.size() - 1 - row);
}

int CommandJournal::rowOf(int id) const
{
    for (int i = m_entries.size() - 1; i >= 0; i--) {
        if (m_entries.at(i).id == id)
            return m_entries.size() - 1 - i;
    }
    return -1;
}

int CommandJournal::count() const
{
    return m_entries.size();
}

QString CommandJournal::stateName(State state)
{
    return StateNames[state];
}

QString CommandJournal::stateText(const Entry &entry)
{
    const QString time = entry.stateTime.toLocalTime().toString("HH:mm:ss");
    switch (entry.state) {
    case Confirmed:
        return tr("confirmed %1 over %2").arg(time, entry.stateLink);
    case NotConfirmed:
        return tr("not confirmed after %1 s").arg(entry.sent.secsTo(entry.stateTime));
    case NotSent:
        return tr("not sent: %1 link down").arg(entry.link);
    case Held:
        return tr("held: waiting for the operator");
    default:
        return stateName(entry.state);
    }
}

int CommandJournal::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_entries.size();
}

int CommandJournal::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant CommandJournal::display(const Entry &entry, int column) const
{
    switch (column) {
    case TimeColumn:
        return entry.sent.toLocalTime().toString("yyyy-MM-dd HH:mm:ss");
    case SeqColumn:
        return joinSeqs(entry.seqs);
    case CommandColumn:
        return entry.commands.join("; ");
    case LinkColumn:
        return entry.link;
    case BytesColumn:
        return QString::fromLatin1(entry.block.toHex(' '));
    case StateColumn:
        return stateText(entry);
    default:
        return QVariant();
    }
}

QVariant CommandJournal::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return QVariant();
    const Entry &entry = m_entries.at(m_entries.size() - 1 - index.row());
    if (role == Qt::DisplayRole)
        return display(entry, index.column());
    if (role == Qt::ForegroundRole && index.column() == StateColumn) {
        static const QHash<int, QColor> colours { { Confirmed, Qt::darkGreen },
            { NotConfirmed, QColor(200, 100, 0) }, { NotSent, Qt::red }, { Cancelled, Qt::darkGray } };
        return colours.contains(entry.state) ? QBrush(colours.value(entry.state)) : QVariant();
    }
    return QVariant();
}

QVariant CommandJournal::headerData(int section, Qt::Orientation orientation, int role) const
{
    static const char *const titles[] = { "Time sent", "Seq.", "Commands", "Link", "Bytes", "State" };
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= ColumnCount)
        return QVariant();
    return tr(titles[section]);
}
