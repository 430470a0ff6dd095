#include "tests/support/Settings.h"

#include "app/aGlobal.h"

void resetSettings()
{
    gsAppStyleSheet.clear();
    gsAppIcon.clear();
    gmFileAssn.clear();
    gstMenu.clear();
    gstDrives.clear();
    gsNoRecurse.clear();
    giWindowArrange = ArrangeSideBySide;
    gwMainframe = nullptr;
    gwPanel1 = nullptr;
    gwPanel2 = nullptr;
}

QString drivesAsText()
{
    QStringList all;
    for (const LSDRIVE& drive : qAsConst(gstDrives)) {
        all.append(drive.path + QLatin1Char('>') + drive.label);
    }
    return all.join(QLatin1Char(','));
}

QString associationsAsText()
{
    QStringList all;
    for (auto each = gmFileAssn.cbegin(); each != gmFileAssn.cend(); ++each) {
        all.append(each.key() + QLatin1Char('>') + each.value());
    }
    return all.join(QLatin1Char(','));
}
