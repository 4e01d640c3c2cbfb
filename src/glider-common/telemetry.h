#ifndef TELEMETRY_H
#define TELEMETRY_H

#include <stdint.h>

#endif
