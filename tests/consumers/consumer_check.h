#ifndef CONSUMER_CHECK_H
#define CONSUMER_CHECK_H

// The consumer programs link one plain library each and nothing of Qt, so
// they report with stdio: one line per failed check, exit status 1.
#include <stdio.h>

namespace consumer
{

inline int &failures()
{
    static int count = 0;
    return count;
}

inline void check(bool ok, const char *what)
{
    if (ok)
        return;
    fprintf(stderr, "FAIL: %s\n", what);
    failures()++;
}

inline int result(const char *name)
{
    printf("%s: %s\n", name, failures() ? "failed" : "ok");
    return failures() ? 1 : 0;
}

} // namespace consumer

#endif
