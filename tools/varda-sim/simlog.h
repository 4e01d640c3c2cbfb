#ifndef SIMLOG_H
#define SIMLOG_H

#include <QString>

// One plain line on standard error: "hh:mm:ss.zzz role: text". The
// simulator's whole user interface, and what the tests wait for.
void simLog(const QString &role, const QString &text);

#endif
