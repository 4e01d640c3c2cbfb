// Any text as a --link value: either a usable link comes out, or a reason
// on one line.
#include <QString>

#include <stddef.h>
#include <stdint.h>

#include "fuzz_check.h"
#include "linkspec.h"

using fuzz::check;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), int(size));
    LinkSpec spec;
    QString error;
    if (!LinkSpec::parse(text, &spec, &error)) {
        check(!error.isEmpty());
        check(!error.contains(QLatin1Char('\n')));
        return 0;
    }
    if (spec.kind == LinkSpec::Serial) {
        check(!spec.device.isEmpty());
        check(spec.baud > 0);
    } else {
        check(!spec.host.isEmpty());
        check(spec.port > 0);
    }
    check(!spec.describe().isEmpty());
    return 0;
}
