#ifndef COMMANDGUARD_H
#define COMMANDGUARD_H

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

class CommandJournal;
class Glider;
class LinkState;
class QMessageBox;
class QWidget;

// Stands between the glider panel and the links: every command block the
// panel emits is entered in the journal, a block that switches a unit off
// waits for the operator's yes, and a block for a link that is down is not
// passed on silently (the operator is told and offered the other link).
class CommandGuard : public QObject
{
    Q_OBJECT
public:
    CommandGuard(CommandJournal *journal, const LinkState *links, Glider *glider, QWidget *dialogParent);

    // Object names of the two questions, for whoever drives them.
    static const char *const PowerOffDialog;
    static const char *const OtherLinkDialog;

public slots:
    // The panel's outgoing signals.
    void fromPell(const QByteArray &frame);
    void fromSbd(const QString &imei, const QByteArray &payload);

signals:
    void toRadio(const QByteArray &frame);
    void toGateway(const QString &imei, const QByteArray &payload);
    // Something the operator must read now, for the status bar.
    void message(const QString &text);
    // A block that went out set the telemetry interval of a link.
    void telemetryIntervalSet(const QString &link, qint64 msecs);

private:
    struct Outgoing {
        QString link;
        QByteArray block; // the command block itself
        QByteArray frame; // radio: the framed extension packet
        QString imei; // satellite: the addressee
    };

    void submit(const Outgoing &out);
    void release(int id, const Outgoing &out);
    void forward(int id, const Outgoing &out);
    void askPowerOff(int id, const Outgoing &out, const QStringList &what);
    void offerOtherLink(int id, const Outgoing &out);
    void reroute(int id, const Outgoing &out);
    QMessageBox *question(const char *name, const QString &title, const QString &text, const QString &yes);

    CommandJournal *m_journal;
    const LinkState *m_links;
    Glider *m_glider;
    QPointer<QWidget> m_dialogParent;
    int m_rerouting = 0; // journal id of the block being sent over the other link
};

#endif
