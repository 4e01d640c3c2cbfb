#include "telemetry.h"
