#ifndef LINKSTATUS_H
#define LINKSTATUS_H

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

class SppHost;

// What a link is doing, in words for a status label: its endpoint and
// "connecting", "up" with frames per second and the age of the last good
// frame, "silent for N s", "down: <reason>", "reconnecting in N s (attempt
// K)". The owner reports the transitions; the text follows them, and the
// time-dependent parts are refreshed twice a second. The tooltip gives the
// counters.
class LinkStatus : public QObject
{
    Q_OBJECT
public:
    enum State { Idle, Connecting, Up, Down, Retrying };
    Q_ENUM(State)

    static const int DefaultSilentAfterMs = 15000;

    explicit LinkStatus(QObject *parent = nullptr);

    // Where the bad-CRC and dropped-byte counters come from; may be null.
    void setReceiver(const SppHost *receiver);
    // An up link that brought nothing for this long is shown as silent.
    void setSilentAfter(int ms);

    State state() const;
    bool isSilent() const;
    QString text() const;
    QString toolTip() const;
    quint64 goodFrames() const;
    int reconnects() const;

public slots:
    void connecting(const QString &endpoint);
    void up();
    void down(const QString &reason);
    // A new attempt is due in delayMs; attempt counts from 1.
    void retrying(int delayMs, int attempt);
    // The operator closed the link.
    void closed();
    // Cheap: counted here, timed at the next refresh.
    void frameReceived();

signals:
    void stateChanged(LinkStatus::State state);
    void textChanged(const QString &text);
    void toolTipChanged(const QString &toolTip);

private:
    void enter(State state);
    void refresh();
    QString stateText() const;
    QString upText() const;
    qint64 silentMs() const;
    double framesPerSecond() const;

    static const int Slots = 10; // seconds of history behind the rate

    State m_state = Idle;
    QString m_endpoint;
    QString m_reason;
    const SppHost *m_receiver = nullptr;
    int m_silent_after = DefaultSilentAfterMs;
    QTimer m_tick;
    QElapsedTimer m_since_up;
    QElapsedTimer m_last_frame; // invalid until the first frame since up
    QElapsedTimer m_retry_clock;
    int m_retry_ms = 0;
    int m_attempt = 0;
    int m_reconnects = 0;
    quint64 m_frames = 0;
    quint64 m_frames_seen = 0; // at the previous refresh
    // Frames per refresh slot, a ring over the last Slots seconds.
    quint64 m_history[2 * Slots] = {};
    int m_history_next = 0;
    int m_history_filled = 0;
    QString m_text;
    QString m_tool_tip;
};

#endif
