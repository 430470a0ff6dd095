#include "app/aGlobal.h"

QString gsAppStyleSheet;
QString gsAppIcon;
QMap<QString, QString> gmFileAssn;
QList<LSMENU> gstMenu;
QList<LSDRIVE> gstDrives;
QString gsNoRecurse;
int giWindowArrange = ArrangeSideBySide;

const int giStatusBarHeight = 24;
const int giNavBarHeight = 24;
const int giDriveBarHeight = 30;

const QString gsProduct = QStringLiteral("Vantrel");
const QString gsVersion = QStringLiteral("Version 0.30");
const QString gsCopywrite = QStringLiteral("Copyright \u00a9 2026 The Vantrel authors");

QString gsLastPath1;
QString gsLastPath2;

QStringList gslDragList;
QString gsDragBase;
QString gsDropBase;
QMutex gmutexLock;

MPanel* gwPanel1 = nullptr;
MPanel* gwPanel2 = nullptr;
aVantrel* gwMainframe = nullptr;
