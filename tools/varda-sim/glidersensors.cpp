#include "glidersensors.h"

#include <QDateTime>
#include <QRandomGenerator>

#include <cmath>

namespace
{
const double StartLat = 63.4400;
const double StartLon = 10.3500;
const double CircleSeconds = 3600.0;
const double DiveSeconds = 1200.0;
const double MaxDepth = 200.0;
const double TwoPi = 6.283185307179586;

qint32 degrees1e7(double deg)
{
    return qint32(std::lround(deg * 1e7));
}
}

GliderSensors::GliderSensors(QRandomGenerator *rng)
    : m_rng(rng)
{
    m_clock.start();
}

double GliderSensors::seconds() const
{
    return m_clock.elapsed() / 1000.0;
}

int GliderSensors::noise(int spread) const
{
    return m_rng->bounded(-spread, spread + 1);
}

double GliderSensors::depth() const
{
    // Triangle: down at a steady rate, then up again.
    const double phase = std::fmod(seconds(), DiveSeconds) / DiveSeconds;
    return MaxDepth * (phase < 0.5 ? 2 * phase : 2 * (1 - phase));
}

double GliderSensors::waterTemperature() const
{
    return 11.5 - depth() * 0.025;
}

pos_time_t GliderSensors::position() const
{
    const double a = TwoPi * seconds() / CircleSeconds;
    pos_time_t p;
    p.lat = degrees1e7(StartLat + 0.01 * std::sin(a)) + noise(20);
    p.lon = degrees1e7(StartLon + 0.02 * (1 - std::cos(a))) + noise(20);
    p.time = quint32(QDateTime::currentSecsSinceEpoch());
    return p;
}

ctd_sample_t GliderSensors::ctd(quint16 sampleNumber) const
{
    ctd_sample_t s;
    s.sample_n = sampleNumber;
    s.salinity = quint16(3420 + depth() * 0.4 + noise(5));
    s.temperature = quint16((waterTemperature() + 20.0) * 1000 + noise(10));
    s.pressure = quint32(qMax(0.0, depth() * 100 + noise(20)));
    s.turbidity = quint16(80 + noise(30));
    s.fluorescence = quint16(qMax(0.0, 250 - depth() + noise(20)));
    s.sound_velocity = quint16((1492.0 - 1300.0 - depth() * 0.02) * 100 + noise(15));
    return s;
}

o2_sample GliderSensors::o2() const
{
    o2_sample s;
    s.o2Concentration = quint16(890 - depth() * 0.8 + noise(5));
    s.airSaturation = quint16(9800 - depth() * 6 + noise(30));
    s.temperature = quint16((waterTemperature() + 10.0) * 100 + noise(2));
    return s;
}

pco2_sample GliderSensors::pco2() const
{
    pco2_sample s;
    s.pco2 = quint32(410 + depth() * 0.3 + noise(3));
    s.co2 = quint32(82 + noise(2));
    s.temperature = quint16((waterTemperature() + 10.0) * 100 + noise(2));
    s.calphase = quint16(32500 + noise(150));
    s.c1amp = quint16(6500 + noise(40));
    s.c2amp = quint16(5000 + noise(40));
    return s;
}

licor_sample GliderSensors::light() const
{
    // 800 uV at the surface, falling off with depth.
    licor_sample s;
    s.light_sensitivity = qint32(800.0 * std::exp(-depth() / 25.0) * 524.288) + noise(200);
    return s;
}

pth_sample GliderSensors::pth() const
{
    pth_sample s;
    s.pressure = quint16(10132 + noise(4));
    s.temperature = qint16(2150 + noise(20));
    s.humidity = quint16(3500 + noise(50));
    return s;
}

sonar_column_describer_t GliderSensors::columnDescriber(quint8 startDepth, quint8 range) const
{
    sonar_column_describer_t d;
    d.status = 0;
    d.start_depth = startDepth;
    d.range = range;
    d.avg_pings = 4;
    d.layers = 8;
    return d;
}

sonar_column_8_t GliderSensors::column() const
{
    sonar_column_8_t c;
    for (int i = 0; i < 8; i++)
        c.signal[i] = qint8(-45 - i * 5 + noise(6));
    return c;
}
