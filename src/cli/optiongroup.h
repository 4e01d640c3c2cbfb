#ifndef OPTIONGROUP_H
#define OPTIONGROUP_H

#include <QString>

class QCommandLineParser;

// A set of options that belongs to one feature (the link, the recording,
// the cockpit): it declares them on a parser and reads them back, with a
// one-line reason when a value is wrong. CommandLine::addGroup runs both.
class OptionGroup
{
public:
    virtual ~OptionGroup() = default;

    virtual void addTo(QCommandLineParser *parser) const = 0;
    // False with the reason in *error when a value is wrong.
    virtual bool read(const QCommandLineParser &parser, QString *error) = 0;
};

#endif
