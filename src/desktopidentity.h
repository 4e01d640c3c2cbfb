#ifndef DESKTOPIDENTITY_H
#define DESKTOPIDENTITY_H

#include <QIcon>
#include <QString>

// A program's own icon ("varda-toolbox", "glider-station") in every size
// drawn for it, from the resources: the same art as the installed theme icons.
QIcon applicationIcon(const QString &program);

// Gives the application's windows the program's icon and ties them to its
// desktop entry (<program>.desktop), so that task bars and docks show them
// as the program started from the menu. Call once the application exists.
void setDesktopIdentity(const QString &program);

#endif
