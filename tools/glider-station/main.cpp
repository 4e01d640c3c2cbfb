#include <QApplication>

#include "gliderstation.h"

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    GliderStation window;
    window.show();
    return app.exec();
}
