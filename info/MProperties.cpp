#include "info/MProperties.h"

#include "app/TextHelpers.h"
#include "ui_MProperties.h"

#include <QDateTime>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QLocale>
#include <QMimeDatabase>
#include <QStorageInfo>

#include <climits>
#include <unistd.h>

namespace {

constexpr int propertiesIconPixels = 64;

/// @return the link's own text, which QFileInfo would make an absolute path of
QString linkText(const QString& path)
{
    QByteArray text(PATH_MAX, '\0');
    const ssize_t length
        = ::readlink(QFile::encodeName(path).constData(), text.data(), static_cast<std::size_t>(text.size()));
    text.truncate(length > 0 ? static_cast<int>(length) : 0);
    return QFile::decodeName(text);
}

QString typeText(const QFileInfo& info)
{
    if (info.isSymLink()) {
        return QStringLiteral("Link to: ") + linkText(info.filePath());
    }
    if (info.isDir()) {
        return QStringLiteral("Directory");
    }
    if (!info.exists()) {
        return QString();
    }
    return QStringLiteral("File: ") + QMimeDatabase().mimeTypeForFile(info).name();
}

QString timeText(const QDateTime& time)
{
    return time.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
}

} // namespace

MProperties::MProperties(QWidget* parent, const QString& path)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::MProperties>())
{
    m_ui->setupUi(this);
    const QFileInfo info(path);
    m_ui->ReadOnly->setText(path);
    m_ui->label_Size->setText(
        QLocale(QLocale::English).toString(QFile(path).size()) + QStringLiteral(" bytes"));
    m_ui->label_Owner->setText(info.group() + QLatin1Char(':') + info.owner());
    m_ui->label_Permissions->setText(xs_formatPermisions(info));
    showVolume(path);
    showTimes(info); // before type and icon, for which the file may be read
    m_ui->label_Type->setText(typeText(info));
    showIcon(info);
}

MProperties::~MProperties() = default;

void MProperties::on_pushButton_clicked()
{
    close();
}

void MProperties::showIcon(const QFileInfo& info)
{
    const QIcon icon = QFileIconProvider().icon(info);
    const QSize size = icon.actualSize(QSize(propertiesIconPixels, propertiesIconPixels));
    m_ui->label_Icon->setPixmap(icon.pixmap(size, QIcon::Normal, QIcon::Off));
}

void MProperties::showTimes(const QFileInfo& info)
{
    m_ui->label_Created->setText(timeText(info.birthTime()));
    m_ui->label_Modified->setText(timeText(info.lastModified()));
    m_ui->label_Accessed->setText(timeText(info.lastRead()));
}

void MProperties::showVolume(const QString& path)
{
    const QStorageInfo volume(path);
    m_ui->label_Device->setText(QFile::decodeName(volume.device()));
    m_ui->label_Filesystem->setText(QFile::decodeName(volume.fileSystemType()));
}
