#include "telemetryrecord.h"

#include <QHash>

#include <cmath>
#include <string.h>

#include "telemetry.h"

namespace
{

struct Field {
    const char *name;
    const char *unit;
};

struct Kind {
    uint8_t type;
    const char *name;
    QVector<Field> fields;
};

const QVector<Field> PositionFields = { { "lat", "deg" }, { "lon", "deg" }, { "time", "s" } };
const QVector<Field> StatusFields = { { "iridium_csq", "bars" }, { "iridium_state", "" }, { "ctd_state", "" },
    { "sonar_state", "" }, { "pell_en", "" }, { "iridium_en", "" } };

// Units the vehicle does not state are the ones its sensors usually report.
const QVector<Kind> &schema()
{
    static const QVector<Kind> kinds = {
        { MSG_HOUSEKEEPING, "housekeeping",
            PositionFields + QVector<Field> { { "ctd_samples", "" }, { "sonar_samples", "" } } + StatusFields
                + QVector<Field> { { "pell_rssi", "dBm" }, { "uptime", "s" }, { "last_command_seq", "" } } },
        { MSG_CTD, "ctd",
            { { "sample_n", "" }, { "salinity", "PSU" }, { "temperature", "°C" }, { "pressure", "dbar" },
                { "turbidity", "NTU" }, { "fluorescence", "µg/l" }, { "sound_velocity", "m/s" } } },
        { MSG_SONAR_REPORT, "sonar_report",
            PositionFields + QVector<Field> { { "command", "" }, { "retstate", "" } } },
        { MSG_HOUSEKEEPING2, "housekeeping2",
            StatusFields
                + QVector<Field> { { "ctd_log_ok", "" }, { "sonar_ok", "" }, { "o2_ok", "" },
                    { "pco2_ok", "" }, { "licor_ok", "" }, { "pth_ok", "" }, { "logging_ok", "" },
                    { "logged_kib", "KiB" }, { "pell_rssi", "dBm" }, { "uptime", "s" },
                    { "last_command_seq", "" } } },
        { MSG_O2, "o2",
            { { "concentration", "µmol/l" }, { "air_saturation", "%" }, { "temperature", "°C" } } },
        { MSG_PTH, "pth", { { "pressure", "hPa" }, { "temperature", "°C" }, { "humidity", "%" } } },
        { MSG_POSTIME, "postime", PositionFields },
        { MSG_LICOR_24, "light", { { "light", "µV" } } },
        { MSG_PCO2_V2, "pco2",
            { { "pco2", "µatm" }, { "co2", "mg/l" }, { "temperature", "°C" }, { "calphase", "deg" },
                { "c1amp", "mV" }, { "c2amp", "mV" } } },
    };
    return kinds;
}

const Kind *kindByName(const QString &name)
{
    for (const Kind &kind : schema()) {
        if (name == QLatin1String(kind.name))
            return &kind;
    }
    return nullptr;
}

const Kind *kindByType(uint8_t type)
{
    for (const Kind &kind : schema()) {
        if (kind.type == type)
            return &kind;
    }
    return nullptr;
}

template <typename Record> Record load(const uint8_t *bytes)
{
    Record record;
    memcpy(&record, bytes, sizeof(record));
    return record;
}

QVector<double> position(const pos_time_t &p)
{
    return { p.lat / 10000000.0, p.lon / 10000000.0, double(p.time) };
}

QVector<double> status(
    unsigned csq, unsigned state, unsigned ctd, unsigned sonar, unsigned pell, unsigned iridium)
{
    return { double(csq), double(state), double(ctd), double(sonar), double(pell), double(iridium) };
}

QVector<double> decodeValues(uint8_t type, const uint8_t *bytes)
{
    switch (type) {
    case MSG_HOUSEKEEPING: {
        const auto hk = load<housekeeping_t>(bytes);
        return position(hk.pos_time) + QVector<double> { double(hk.ctd_samples), double(hk.sonar_samples) }
        + status(hk.iridium_csq, hk.iridium_state, hk.ctd_state, hk.sonar_state, hk.pell_en, hk.iridium_en)
            + QVector<double> { hk.pell_rssi - 200.0, double(hk.uptime), double(hk.last_command_seq) };
    }
    case MSG_CTD: {
        const auto c = load<ctd_sample_t>(bytes);
        return { double(c.sample_n), c.salinity / 100.0, c.temperature / 1000.0 - 20.0, c.pressure / 100.0,
            c.turbidity / 100.0, c.fluorescence / 100.0, c.sound_velocity / 100.0 + 1300.0 };
    }
    case MSG_SONAR_REPORT: {
        const auto r = load<sonar_report_t>(bytes);
        return position(r.pos_time) + QVector<double> { double(r.command), double(r.retstate) };
    }
    case MSG_HOUSEKEEPING2: {
        const auto hk = load<housekeeping2_t>(bytes);
        return status(
                   hk.iridium_csq, hk.iridium_state, hk.ctd_state, hk.sonar_state, hk.pell_en, hk.iridium_en)
            + QVector<double> { double(hk.ctd_log_ok), double(hk.sonar_ok), double(hk.o2_ok),
                  double(hk.pco2_ok), double(hk.licor_ok), double(hk.pth_ok), double(hk.logging_ok),
                  double(hk.logged_kib), hk.pell_rssi - 200.0, double(hk.uptime),
                  double(hk.last_command_seq) };
    }
    case MSG_O2: {
        const auto o = load<o2_sample>(bytes);
        return { o.o2Concentration / 100.0, o.airSaturation / 100.0, o.temperature / 100.0 - 10.0 };
    }
    case MSG_PTH: {
        const auto p = load<pth_sample>(bytes);
        return { p.pressure / 10.0, p.temperature / 100.0, p.humidity / 100.0 };
    }
    case MSG_POSTIME:
        return position(load<pos_time_t>(bytes));
    case MSG_LICOR_24:
        return { load<licor_sample>(bytes).light_sensitivity / 524.288 };
    case MSG_PCO2_V2: {
        const auto p = load<pco2_sample>(bytes);
        return { double(p.pco2), p.co2 / 100.0, p.temperature / 100.0 - 10.0, p.calphase / 1000.0,
            p.c1amp / 10.0, p.c2amp / 10.0 };
    }
    default:
        return {};
    }
}

} // namespace

const QStringList &TelemetryRecord::kinds()
{
    static const QStringList names = [] {
        QStringList out;
        for (const Kind &kind : schema())
            out << kind.name;
        return out;
    }();
    return names;
}

// Built once: the history asks for them for every record it reads.
const QStringList &TelemetryRecord::fieldNames(const QString &kind)
{
    static const QHash<QString, QStringList> names = [] {
        QHash<QString, QStringList> out;
        for (const Kind &k : schema()) {
            for (const Field &field : k.fields)
                out[k.name] << field.name;
        }
        return out;
    }();
    static const QStringList none;
    const auto it = names.constFind(kind);
    return it == names.cend() ? none : *it;
}

QString TelemetryRecord::unit(const QString &kind, const QString &field)
{
    if (const Kind *k = kindByName(kind)) {
        for (const Field &f : k->fields) {
            if (field == QLatin1String(f.name))
                return QString::fromUtf8(f.unit);
        }
    }
    return QString();
}

bool TelemetryRecord::decode(uint8_t type, const uint8_t *record, TelemetryRecord *out)
{
    const Kind *kind = kindByType(type);
    if (kind == nullptr || record == nullptr || out == nullptr)
        return false;
    out->kind = kind->name;
    out->values = decodeValues(type, record);
    return true;
}

double TelemetryRecord::value(const QString &field) const
{
    const int index = fieldNames(kind).indexOf(field);
    return index >= 0 && index < values.size() ? values.at(index) : std::nan("");
}

bool TelemetryRecord::position(double *lat, double *lon, QDateTime *fix) const
{
    if (!fieldNames(kind).contains("lat"))
        return false;
    *lat = value("lat");
    *lon = value("lon");
    *fix = QDateTime::fromSecsSinceEpoch(qint64(value("time")), Qt::UTC);
    return std::isfinite(*lat) && std::isfinite(*lon);
}
