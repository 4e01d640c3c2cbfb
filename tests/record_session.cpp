// Not a test: a recording radio tool for the capture tests, which kill it
// and replay what it wrote. It connects its window over TCP to 127.0.0.1
// at --port, records as varda-toolbox does (same options), and quits after
// --seconds (0: runs until killed). Prints "recording PATH" once connected.
#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

#include <stdio.h>

#include "mainwindow.h"
#include "recorder.h"
#include "recordingoptions.h"
#include "recordingsession.h"

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    app.setApplicationName("varda-toolbox");
    QCommandLineParser parser;
    RecordingOptions recording;
    recording.addTo(&parser);
    const QCommandLineOption port("port", "Modem port on 127.0.0.1.", "port");
    const QCommandLineOption seconds("seconds", "Quit after this long; 0 runs until killed.", "s", "0");
    parser.addOptions({ port, seconds });
    parser.process(app);
    QString error;
    if (!recording.read(parser, &error))
        return 2;

    MainWindow window;
    RecordingSession session(recording, &window);
    auto *type = window.findChild<QComboBox *>("linkTypeCombo");
    type->setCurrentIndex(type->findText("TCP"));
    window.findChild<QLineEdit *>("portText")->setText(parser.value(port));
    window.findChild<QPushButton *>("connectButton")->click();
    QTimer::singleShot(0, &app, [&session] {
        fprintf(stderr, "recording %s\n", qPrintable(session.recorder()->filePath()));
        fflush(stderr);
    });
    const int s = parser.value(seconds).toInt();
    if (s > 0)
        QTimer::singleShot(s * 1000, &app, &QCoreApplication::quit);
    return app.exec();
}
