#include <QApplication>
#include <QCommandLineParser>

#include <stdio.h>

#include "gatewaysettings.h"
#include "gliderstation.h"
#include "recordingoptions.h"
#include "recordingsession.h"
#include "stylesheet.h"

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    app.setApplicationName("varda-toolbox"); // the captures share the radio tool's folder
    app.setStyleSheet(QLatin1String(TOOLBOX_STYLE_SHEET));
    QCommandLineParser parser;
    RecordingOptions recording;
    recording.addTo(&parser);
    parser.process(app);
    QString error;
    if (!recording.read(parser, &error)) {
        fprintf(stderr, "%s: %s\n", argv[0], qPrintable(error));
        return 2;
    }
    GliderStation window;
    RecordingSession session(recording, window.radio());
    session.watchGateway(window.gateway()->client());
    window.show();
    return app.exec();
}
