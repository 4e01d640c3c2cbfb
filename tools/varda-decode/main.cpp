#include <QCoreApplication>
#include <QFile>

#include <stdio.h>

#include "captureprinter.h"
#include "commandline.h"
#include "linkaddress.h"
#include "livedecoder.h"
#include "quitonsignal.h"

namespace
{
const int ExitDamaged = 2;
const int ExitLinkFailed = 1;

const QCommandLineOption Format("format", "Output: jsonl (default) or csv.", "format", "jsonl");
const QCommandLineOption Link("link",
    "Decode a live modem link until interrupted: tcp:HOST:PORT, udp:HOST:PORT or serial:DEVICE[@BAUD].",
    "address");

int decodeFiles(const QStringList &files, CapturePrinter *printer)
{
    int status = 0;
    for (const QString &file : files) {
        if (!printer->printFile(QFile::encodeName(file).toStdString(), "varda-decode", stderr))
            status = ExitDamaged;
    }
    return status;
}

int decodeLink(QCoreApplication *app, const LinkAddress &address, CapturePrinter *printer)
{
    LiveDecoder decoder(address, printer);
    QString error;
    if (!decoder.open(&error)) {
        fprintf(stderr, "varda-decode: %s: %s\n", qPrintable(address.name()), qPrintable(error));
        return ExitLinkFailed;
    }
    setvbuf(stdout, nullptr, _IOLBF, 0); // a line as soon as its block is complete
    QuitOnSignal quit;
    int status = 0;
    QObject::connect(&decoder, &LiveDecoder::lost, app, [&status, &address](const QString &why) {
        fprintf(stderr, "varda-decode: %s: %s\n", qPrintable(address.name()), qPrintable(why));
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
    CommandLine cli(
        "varda-decode", "Prints the blocks of capture files, or of a live modem link, one line each.");
    cli.addOption(Format);
    cli.addOption(Link);
    cli.addPositionalArgument("files", "Capture files (pcapng) to decode, in order.", "[FILE...]");
    if (!cli.parse(argc, argv))
        return cli.exitCode();
    const QString format = cli.value(Format);
    if (format != QLatin1String("jsonl") && format != QLatin1String("csv"))
        return cli.refuse("the format is jsonl or csv");
    const QStringList files = cli.positionalArguments();
    LinkAddress address;
    QString error;
    if (cli.isSet(Link) && !files.isEmpty())
        return cli.refuse("either --link or files, not both");
    if (cli.isSet(Link) && !LinkAddress::parse(cli.value(Link), &address, &error))
        return cli.refuse(error);
    if (!cli.isSet(Link) && files.isEmpty())
        return cli.refuse("no capture file given");

    CapturePrinter printer(
        format == QLatin1String("csv") ? BlockFormatter::Csv : BlockFormatter::Jsonl, stdout);
    if (files.isEmpty()) {
        QCoreApplication app(argc, argv);
        return decodeLink(&app, address, &printer);
    }
    return decodeFiles(files, &printer);
}
