#include "app/EndSignals.h"
#include "app/FileNames.h"
#include "app/HeldKeys.h"
#include "app/InheritedDescriptors.h"
#include "app/ReadConfig.h"
#include "app/aGlobal.h"
#include "app/aVantrel.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QIcon>

#include <optional>

namespace {

/// While TZ is not set, glibc looks at /etc/localtime again for every time that it converts: in a big folder
/// that is most of the work of sorting by date.
void nameTimeZone()
{
    if (!qEnvironmentVariableIsSet("TZ")) {
        qputenv("TZ", ":/etc/localtime");
    }
}

/// A variable of the environment that Qt reads while the program starts, where the user has not set it. It
/// goes with this: the programs that the user starts must not inherit it.
class StartVariable
{
public:
    StartVariable(const char* name, const char* value)
        : m_name(qEnvironmentVariableIsSet(name) ? nullptr : name)
    {
        if (m_name != nullptr) {
            qputenv(m_name, value);
        }
    }
    ~StartVariable()
    {
        if (m_name != nullptr) {
            qunsetenv(m_name);
        }
    }
    Q_DISABLE_COPY_MOVE(StartVariable)

private:
    const char* m_name;
};

/// Qt looks for Wayland only in a session that calls itself so, which one that was started from a console
/// does not.
bool isOnlyWayland()
{
    return qEnvironmentVariableIsEmpty("DISPLAY") && !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

/// Outside the large desktops nobody names an icon theme, and the open folder of the tree would have no icon.
/// The first theme that is installed and has one is taken then.
void chooseIconTheme()
{
    const QString openFolder = QStringLiteral("folder-open");
    const QString before = QIcon::themeName();
    for (const char* name : {"Adwaita", "gnome", "breeze", "Papirus", "oxygen", "Tango"}) {
        if (QIcon::hasThemeIcon(openFolder)) {
            return;
        }
        QIcon::setThemeName(QLatin1String(name));
    }
    if (!QIcon::hasThemeIcon(openFolder)) {
        QIcon::setThemeName(before);
    }
}

/// Only a file is looked into: an icon loader would wait for a pipe.
QIcon loadIcon(const QString& fileName)
{
    return QFileInfo(fileName).isFile() ? QIcon(fileName) : QIcon();
}

} // namespace

int main(int argc, char** argv)
{
    fillStandardDescriptors();
    keepInheritedDescriptors();
    useUtf8FileNames();
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    nameTimeZone();
    // Keeps the platform plugin from loading OpenGL, which no widget here uses. It looks when the first
    // window is made.
    std::optional<StartVariable> withoutGl(std::in_place, "QT_XCB_GL_INTEGRATION", "none");
    // On a screen of 144 dots to the inch everything is scaled by two. Without this its letters would be,
    // too, and those of two panels have no room then.
    std::optional<StartVariable> letters(std::in_place, "QT_DPI_ADJUSTMENT_POLICY", "AdjustDpi");
    // The end of a session ends the program as a signal does. Otherwise each window would be asked to close
    // first, and a running operation, or its open question, would put off the end and be aborted as well.
    QGuiApplication::setFallbackSessionManagementEnabled(false);
    std::optional<StartVariable> platform;
    if (isOnlyWayland()) {
        platform.emplace("QT_QPA_PLATFORM", "wayland;xcb");
    }
    const QApplication application(argc, argv);
    platform.reset();
    const EndSignals endSignals;
    const HeldKeys heldKeys;
    chooseIconTheme();
    ReadConfig(QDir::homePath() + QStringLiteral("/.Vantrel"));
    QApplication::setWindowIcon(loadIcon(gsAppIcon));
    qApp->setStyleSheet(gsAppStyleSheet);
    if (endSignals.haveCome()) {
        return 0; // the box about the settings file was all there is
    }
    aVantrel window;
    window.show();
    withoutGl.reset();
    letters.reset();
    return QApplication::exec();
}
