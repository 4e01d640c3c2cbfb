#include "desktopidentity.h"

#include <QGuiApplication>
#include <QSize>

QIcon applicationIcon(const QString &program)
{
    Q_INIT_RESOURCE(resources);
    QIcon icon;
    for (int size : { 16, 32, 48, 64, 128, 256 })
        icon.addFile(QString(":/icons/%1-%2.png").arg(program).arg(size), QSize(size, size));
    return icon;
}

void setDesktopIdentity(const QString &program)
{
    QGuiApplication::setWindowIcon(applicationIcon(program));
    QGuiApplication::setDesktopFileName(program);
}
