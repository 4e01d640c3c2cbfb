#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>

#include <stdio.h>

#include "captureprinter.h"
#include "linkspec.h"
#include "livedecoder.h"
#include "quitonsignal.h"

namespace
{
const int ExitDamaged = 2;
const int ExitUsage = 2;
const int ExitLinkFailed = 1;

const QCommandLineOption Format("format", "Output: jsonl (default) or csv.", "format", "jsonl");
const QCommandLineOption Link("link",
    "Decode a live modem link until interrupted: tcp:HOST:PORT, udp:HOST:PORT or serial:DEVICE[@BAUD].",
    "spec");

int usage(const QString &message)
{
    fprintf(stderr, "varda-decode: %s (see --help)\n", qPrintable(message));
    return ExitUsage;
}

int decodeFiles(const QStringList &files, CapturePrinter *printer)
{
    int status = 0;
    for (const QString &file : files) {
        if (!printer->printFile(QFile::encodeName(file).toStdString(), "varda-decode", stderr))
            status = ExitDamaged;
    }
    return status;
}

int decodeLink(QCoreApplication *app, const LinkSpec &spec, CapturePrinter *printer)
{
    LiveDecoder decoder(spec, printer);
    QString error;
    if (!decoder.open(&error)) {
        fprintf(stderr, "varda-decode: %s: %s\n", qPrintable(spec.name()), qPrintable(error));
        return ExitLinkFailed;
    }
    setvbuf(stdout, nullptr, _IOLBF, 0); // a line as soon as its block is complete
    QuitOnSignal quit;
    int status = 0;
    QObject::connect(&decoder, &LiveDecoder::lost, app, [&status, &spec](const QString &why) {
        fprintf(stderr, "varda-decode: %s: %s\n", qPrintable(spec.name()), qPrintable(why));
        status = ExitLinkFailed;
        QCoreApplication::quit();
    });
    app->exec();
    decoder.finish();
    return status;
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    app.setApplicationName("varda-decode");
    app.setApplicationVersion(QStringLiteral(VARDA_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Prints the blocks of capture files, or of a live modem link, one line each.");
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    parser.addOptions({ Format, Link });
    parser.addPositionalArgument("files", "Capture files (pcapng) to decode, in order.", "[FILE...]");
    if (!parser.parse(app.arguments()))
        return usage(parser.errorText());
    if (parser.isSet(help))
        parser.showHelp(0);
    if (parser.isSet(version))
        parser.showVersion();

    const QString format = parser.value(Format);
    if (format != QLatin1String("jsonl") && format != QLatin1String("csv"))
        return usage("the format is jsonl or csv");
    CapturePrinter printer(
        format == QLatin1String("csv") ? BlockFormatter::Csv : BlockFormatter::Jsonl, stdout);
    const QStringList files = parser.positionalArguments();
    if (parser.isSet(Link)) {
        if (!files.isEmpty())
            return usage("either --link or files, not both");
        LinkSpec spec;
        QString error;
        if (!LinkSpec::parse(parser.value(Link), &spec, &error))
            return usage(error);
        return decodeLink(&app, spec, &printer);
    }
    if (files.isEmpty())
        return usage("no capture file given");
    return decodeFiles(files, &printer);
}
