#include <QApplication>

#include "mainwindow.h"

static const char STYLE_SHEET[]
    = "QGroupBox { border: 1px solid gray; border-radius: 5px; margin-top: 0.5em; }\n"
      "QGroupBox::title { subcontrol-origin: margin; left: 10px; padding: 0 3px 0 3px; }";

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    app.setStyleSheet(QLatin1String(STYLE_SHEET));
    MainWindow window;
    window.show();
    return app.exec();
}
