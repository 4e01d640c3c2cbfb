#ifndef GLIDER_HARNESS_H
#define GLIDER_HARNESS_H

#include <QByteArray>
#include <QStringList>
#include <QTemporaryDir>
#include <memory>

#include "glider.h"

// What the glider tests share: payloads written as hex (blanks skipped), the
// debug lines of the code under test, and a panel in a fresh temporary home
// (it makes HOME/.toolbox its working and log directory).
inline QByteArray bytes(const char *hex)
{
    return QByteArray::fromHex(hex);
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

class GliderInTempHome
{
public:
    GliderInTempHome()
    {
        qputenv("HOME", m_home.path().toLocal8Bit());
        m_glider.reset(new Glider);
        debugLines().clear();
    }
    Glider *glider() const
    {
        return m_glider.get();
    }
    QString logDir() const
    {
        return m_home.path() + "/.toolbox";
    }

private:
    QTemporaryDir m_home;
    std::unique_ptr<Glider> m_glider;
};

#endif
