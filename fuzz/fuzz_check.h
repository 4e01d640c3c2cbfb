#ifndef FUZZ_CHECK_H
#define FUZZ_CHECK_H

// What every fuzz target shares, plain C++ so that the targets of the plain
// libraries link nothing else.
#include <stdlib.h>

namespace fuzz
{

// A property that must hold: libFuzzer keeps the input that breaks it.
inline void check(bool ok)
{
    if (!ok)
        abort();
}

} // namespace fuzz

#endif
