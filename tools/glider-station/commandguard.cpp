#include "commandguard.h"

#include <QDateTime>
#include <QMessageBox>
#include <QPushButton>

#include "commandjournal.h"
#include "commandsummary.h"
#include "glider.h"
#include "linkstate.h"
#include "varda_extension_qt.h"
#include "varda_spp_host.h"

const char *const CommandGuard::PowerOffDialog = "powerOffConfirm";
const char *const CommandGuard::OtherLinkDialog = "otherLinkOffer";

namespace
{
// A radio frame from the panel: SPP header, transmit header, then an
// extension packet whose data record is the command block.
QByteArray blockOfFrame(const QByteArray &frame)
{
    const int skip = int(sizeof(vrd_spphdr_t) + sizeof(spp_txhdr_t));
    if (frame.size() <= skip)
        return QByteArray();
    VardaExtension ext;
    ext.parse(reinterpret_cast<const uint8_t *>(frame.constData()) + skip, uint16_t(frame.size() - skip));
    return ext.getData();
}

QDateTime now()
{
    return QDateTime::currentDateTimeUtc();
}
}

CommandGuard::CommandGuard(
    CommandJournal *journal, const LinkState *links, Glider *glider, QWidget *dialogParent)
    : QObject(dialogParent)
    , m_journal(journal)
    , m_links(links)
    , m_glider(glider)
    , m_dialogParent(dialogParent)
{
}

void CommandGuard::fromPell(const QByteArray &frame)
{
    submit({ QStringLiteral("Pell"), blockOfFrame(frame), frame, QString() });
}

void CommandGuard::fromSbd(const QString &imei, const QByteArray &payload)
{
    submit({ QStringLiteral("Iridium"), payload, QByteArray(), imei });
}

void CommandGuard::submit(const Outgoing &out)
{
    if (m_rerouting) {
        m_journal->setLink(m_rerouting, out.link);
        forward(m_rerouting, out);
        return;
    }
    const QStringList offs = CommandSummary(out.block).powerOffs();
    if (offs.isEmpty()) {
        release(m_journal->add(out.block, out.link, CommandJournal::Sent, now()), out);
        return;
    }
    askPowerOff(m_journal->add(out.block, out.link, CommandJournal::Held, now()), out, offs);
}

// Passes a block on if its link is up; otherwise says so and offers the other.
void CommandGuard::release(int id, const Outgoing &out)
{
    if (m_links->isUp(out.link)) {
        forward(id, out);
        return;
    }
    m_journal->setState(id, CommandJournal::NotSent, now());
    const CommandJournal::Entry *entry = m_journal->entry(id);
    emit message(tr("%1 link is down: command %2 not sent").arg(out.link, entry->commands.join("; ")));
    if (m_links->isUp(LinkState::other(out.link)))
        offerOtherLink(id, out);
}

void CommandGuard::forward(int id, const Outgoing &out)
{
    if (out.link == "Pell")
        emit toRadio(out.frame);
    else
        emit toGateway(out.imei, out.block);
    m_journal->setState(id, CommandJournal::Sent, now());
    const qint64 interval = CommandSummary(out.block).telemetryInterval(out.link);
    if (interval > 0)
        emit telemetryIntervalSet(out.link, interval);
}

QMessageBox *CommandGuard::question(
    const char *name, const QString &title, const QString &text, const QString &yes)
{
    auto *box = new QMessageBox(QMessageBox::Warning, title, text, QMessageBox::NoButton, m_dialogParent);
    box->setObjectName(name);
    box->setAttribute(Qt::WA_DeleteOnClose);
    QPushButton *accept = box->addButton(yes, QMessageBox::AcceptRole);
    accept->setObjectName("acceptButton");
    QPushButton *cancel = box->addButton(QMessageBox::Cancel);
    cancel->setObjectName("cancelButton");
    box->setDefaultButton(cancel);
    box->setWindowModality(Qt::WindowModal);
    return box;
}

void CommandGuard::askPowerOff(int id, const Outgoing &out, const QStringList &what)
{
    QMessageBox *box = question(PowerOffDialog, tr("Switch off?"),
        tr("This command switches off: %1.\nIt goes to the vehicle over %2.%3")
            .arg(what.join(", "), out.link,
                what.join(" ").contains(out.link)
                    ? tr("\nThe %1 link to the vehicle will be cut.").arg(out.link)
                    : QString()),
        tr("Switch off"));
    connect(box, &QMessageBox::finished, this, [this, id, out, box] {
        if (box->buttonRole(box->clickedButton()) == QMessageBox::AcceptRole) {
            release(id, out);
        } else {
            m_journal->setState(id, CommandJournal::Cancelled, now());
            emit message(tr("Command cancelled, nothing sent"));
        }
    });
    box->open();
}

void CommandGuard::offerOtherLink(int id, const Outgoing &out)
{
    const QString other = LinkState::other(out.link);
    QMessageBox *box = question(OtherLinkDialog, tr("Link down"),
        tr("The %1 link is down; the command was not sent.\nSend it over %2 instead?").arg(out.link, other),
        tr("Send over %1").arg(other));
    connect(box, &QMessageBox::finished, this, [this, id, out, box] {
        if (box->buttonRole(box->clickedButton()) == QMessageBox::AcceptRole)
            reroute(id, out);
    });
    box->open();
}

void CommandGuard::reroute(int id, const Outgoing &out)
{
    const QString other = LinkState::other(out.link);
    if (!m_links->isUp(other)) {
        emit message(tr("%1 link is down too: command not sent").arg(other));
        return;
    }
    m_rerouting = id;
    m_glider->sendDataOver(
        other, reinterpret_cast<const uint8_t *>(out.block.constData()), uint16_t(out.block.size()));
    m_rerouting = 0;
}
