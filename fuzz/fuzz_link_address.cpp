// Any text as a --link value: either a usable link comes out, or a reason
// on one line.
#include <QString>

#include <stddef.h>
#include <stdint.h>

#include "fuzz_check.h"
#include "linkaddress.h"

using fuzz::check;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), int(size));
    LinkAddress address;
    QString error;
    if (!LinkAddress::parse(text, &address, &error)) {
        check(!error.isEmpty());
        check(!error.contains(QLatin1Char('\n')));
        return 0;
    }
    if (address.kind == LinkAddress::Serial) {
        check(!address.device.isEmpty());
        check(address.baud > 0);
    } else {
        check(!address.host.isEmpty());
        check(address.port > 0);
    }
    check(!address.describe().isEmpty());
    return 0;
}
