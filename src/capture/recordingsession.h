#ifndef RECORDINGSESSION_H
#define RECORDINGSESSION_H

#include <QObject>
#include <QString>

class IridiumTcp;
class MainWindow;
class QLabel;
class Recorder;
class RecordingOptions;

// Records a tool's session: the modem link of its radio window and,
// when watched, a gateway client. Says in the window's status bar whether
// and where it records (label "recordingLabel"); a folder that cannot be
// written is said once in the status bar, and the tool goes on without
// recording.
class RecordingSession : public QObject
{
    Q_OBJECT
public:
    RecordingSession(const RecordingOptions &options, MainWindow *window, QObject *parent = nullptr);

    void watchGateway(IridiumTcp *client);
    Recorder *recorder() const;

private:
    void showStopped(const QString &reason);

    MainWindow *m_window;
    Recorder *m_recorder;
    QLabel *m_label;
};

#endif
