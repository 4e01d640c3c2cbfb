#ifndef CSVLINE_H
#define CSVLINE_H

#include <QString>
#include <QStringList>

// One line of a comma-separated file: fields holding a comma, a quote or a
// line break are quoted, quotes inside doubled.
class CsvLine
{
public:
    static QString join(const QStringList &fields);
    // The fields of one line (without its line end). A quote left open runs
    // to the end of the line; nothing in the text can fail the split.
    static QStringList split(const QString &line);
};

#endif
