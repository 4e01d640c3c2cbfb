#include <QApplication>

#include "gliderstation.h"
#include "stylesheet.h"

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    app.setStyleSheet(QLatin1String(TOOLBOX_STYLE_SHEET));
    GliderStation window;
    window.show();
    return app.exec();
}
