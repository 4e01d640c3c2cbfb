#include "simlog.h"

#include <QTime>

#include <cstdio>

void simLog(const QString &role, const QString &text)
{
    const QString line = QTime::currentTime().toString("hh:mm:ss.zzz") + ' ' + role + ": " + text + '\n';
    fputs(line.toLocal8Bit().constData(), stderr);
    fflush(stderr);
}
