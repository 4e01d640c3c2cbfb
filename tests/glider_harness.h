#ifndef GLIDER_HARNESS_H
#define GLIDER_HARNESS_H

#include <QByteArray>
#include <QStringList>
#include <QTemporaryDir>

#include "glider.h"

// What the glider tests share: a panel in a fresh temporary home, payloads
// written as hex, and the debug lines of the code under test.

inline QByteArray bytes(const char *hex)
{
    return QByteArray::fromHex(hex); // blanks between bytes are skipped
}

inline QStringList &debugLines()
{
    static QStringList lines;
    return lines;
}

inline void captureDebugLines()
{
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &, const QString &msg) {
        if (type == QtDebugMsg)
            debugLines() << msg;
    });
}

// The panel makes HOME/.toolbox its working directory and log directory.
class GliderInTempHome
{
public:
    GliderInTempHome()
    {
        qputenv("HOME", m_home.path().toLocal8Bit());
        m_glider = new Glider;
        debugLines().clear();
    }
    ~GliderInTempHome()
    {
        delete m_glider;
    }
    Glider *glider() const
    {
        return m_glider;
    }
    QString logDir() const
    {
        return m_home.path() + "/.toolbox";
    }

private:
    QTemporaryDir m_home;
    Glider *m_glider = nullptr;
};

#endif
