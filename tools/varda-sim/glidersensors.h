#ifndef GLIDERSENSORS_H
#define GLIDERSENSORS_H

#include <QElapsedTimer>

#include "telemetry.h"

class QRandomGenerator;

// Plausible readings of the vehicle's sensors: it circles slowly off the
// coast and dives to 200 m and back every 20 minutes; water properties
// follow the depth, with a little noise on everything.
class GliderSensors
{
public:
    explicit GliderSensors(QRandomGenerator *rng);

    pos_time_t position() const;
    ctd_sample_t ctd(quint16 sampleNumber) const;
    o2_sample o2() const;
    pco2_sample pco2() const;
    licor_sample light() const;
    pth_sample pth() const;
    sonar_column_describer_t columnDescriber(quint8 startDepth, quint8 range) const;
    sonar_column_8_t column() const;
    double depth() const;

private:
    double seconds() const;
    double waterTemperature() const;
    int noise(int spread) const;

    QRandomGenerator *m_rng;
    QElapsedTimer m_clock;
};

#endif
