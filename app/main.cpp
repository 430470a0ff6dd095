#include "app/ReadConfig.h"
#include "app/aGlobal.h"
#include "app/aVantrel.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QIcon>

#include <memory>

namespace {

/// While TZ is not set, glibc looks at /etc/localtime again for every time that it converts: in a big folder
/// that is most of the work of sorting by date.
void nameTimeZone()
{
    if (!qEnvironmentVariableIsSet("TZ")) {
        qputenv("TZ", ":/etc/localtime");
    }
}

/// Keeps the platform plugin from loading OpenGL, which no widget here uses, while an application object is
/// made. The programs that the user starts must not inherit it, so it ends with this object.
class WithoutGl
{
public:
    WithoutGl()
        : m_set(!qEnvironmentVariableIsSet(name))
    {
        if (m_set) {
            qputenv(name, "none");
        }
    }
    ~WithoutGl()
    {
        if (m_set) {
            qunsetenv(name);
        }
    }
    Q_DISABLE_COPY_MOVE(WithoutGl)

private:
    static constexpr const char* name = "QT_XCB_GL_INTEGRATION";
    bool m_set;
};

std::unique_ptr<QApplication> makeApplication(int& argc, char** argv)
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    nameTimeZone();
    const WithoutGl withoutGl;
    return std::make_unique<QApplication>(argc, argv);
}

/// Only a file is looked into: an icon loader would wait for a pipe.
QIcon loadIcon(const QString& fileName)
{
    return QFileInfo(fileName).isFile() ? QIcon(fileName) : QIcon();
}

} // namespace

int main(int argc, char** argv)
{
    const std::unique_ptr<QApplication> application = makeApplication(argc, argv);
    ReadConfig(QDir::homePath() + QStringLiteral("/.Vantrel"));
    QApplication::setWindowIcon(loadIcon(gsAppIcon));
    application->setStyleSheet(gsAppStyleSheet);
    aVantrel window;
    window.show();
    return QApplication::exec();
}
