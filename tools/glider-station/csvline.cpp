#include "csvline.h"

namespace
{
const QChar Quote('"');
const QChar Comma(',');

QString quoted(const QString &field)
{
    if (!field.contains(Comma) && !field.contains(Quote) && !field.contains('\n') && !field.contains('\r'))
        return field;
    QString out = field;
    out.replace(Quote, QStringLiteral("\"\""));
    return Quote + out + Quote;
}
}

QString CsvLine::join(const QStringList &fields)
{
    QStringList out;
    out.reserve(fields.size());
    for (const QString &field : fields)
        out << quoted(field);
    return out.join(Comma);
}

QStringList CsvLine::split(const QString &line)
{
    if (!line.contains(Quote))
        return line.split(Comma);
    QStringList fields;
    QString field;
    bool inQuotes = false;
    for (int i = 0; i < line.size(); i++) {
        const QChar c = line.at(i);
        if (inQuotes) {
            if (c != Quote)
                field += c;
            else if (i + 1 < line.size() && line.at(i + 1) == Quote)
                field += line.at(++i);
            else
                inQuotes = false;
        } else if (c == Quote) {
            inQuotes = true;
        } else if (c == Comma) {
            fields << field;
            field.clear();
        } else {
            field += c;
        }
    }
    fields << field;
    return fields;
}
