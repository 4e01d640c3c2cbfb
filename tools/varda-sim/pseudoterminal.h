#ifndef PSEUDOTERMINAL_H
#define PSEUDOTERMINAL_H

#include <QByteArray>
#include <QObject>
#include <QString>

class QSocketNotifier;

// The master side of a pseudo-terminal in raw mode, so that a serial client
// can open the slave (name()) as if it were the modem's port. The slave is
// held open here too: without it the master reports an error whenever no
// client has the port open.
class PseudoTerminal : public QObject
{
    Q_OBJECT
public:
    explicit PseudoTerminal(QObject *parent = nullptr);
    ~PseudoTerminal() override;

    bool open(QString *error);
    // Closes both sides, so the client's port fails, and opens a new
    // terminal; its name may differ.
    bool reopen(QString *error);
    QString name() const;
    // Writes what the terminal takes now; the rest is dropped, as a modem
    // drops what a client that is not reading cannot take.
    void write(const QByteArray &bytes);

signals:
    void bytesRead(const QByteArray &bytes);

private:
    void readMaster();
    void closeAll();

    int m_master = -1;
    int m_slave = -1;
    QString m_name;
    QSocketNotifier *m_notifier = nullptr;
};

#endif
