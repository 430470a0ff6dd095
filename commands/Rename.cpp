#include "commands/Rename.h"

#include "app/MessageBoxes.h"
#include "ui_Rename.h"

#include <QDir>
#include <QFileInfo>

#include <cerrno>
#include <sys/stat.h>

namespace {

/// @return whether nothing has the name, and something could have it. QDir takes a broken link for nothing,
/// and where
///         a name turns out to be taken its rename() copies the file to wherever the link leads and removes
///         it here. Of a name that is too long, or that leads through a file, it complains on the console.
bool isFree(const QDir& dir, const QString& name)
{
    struct stat info;
    return ::lstat(QFile::encodeName(dir.filePath(name)).constData(), &info) != 0 && errno == ENOENT;
}

} // namespace

Rename::Rename(QWidget* parent, const QString& path)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::Rename>())
{
    m_ui->setupUi(this);
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    m_folder = slash <= 0 ? QStringLiteral("/") : path.left(slash);
    m_oldName = path.mid(slash + 1);

    const QString readOnly = QStringLiteral("ReadOnly"); // the name that style sheets know such fields by
    m_ui->lineEditDir->setObjectName(readOnly);
    m_ui->lineEditOld->setObjectName(readOnly);
    m_ui->lineEditDir->setText(m_folder);
    m_ui->lineEditOld->setText(m_oldName);
    m_ui->lineEditNew->setText(m_oldName);
    m_ui->lineEditNew->selectAll();
    m_ui->lineEditNew->setFocus();
}

Rename::~Rename() = default;

void Rename::on_pushButtonOK_clicked()
{
    m_newName = m_ui->lineEditNew->text();
    renameItem();
}

void Rename::on_pushButtonCancel_clicked()
{
    close();
}

void Rename::renameItem()
{
    const QString title = QStringLiteral("Error");
    QDir dir{QString()};
    // It is wanted that both checks that close the dialog go on to the next one, so that a folder or an item
    // that has vanished can be told of twice.
    if (!dir.cd(m_folder)) {
        criticalBox(this, title, QStringLiteral("Vantrel cannot access directory:\n") + m_folder);
        close();
    }
    // Empty names neither exist nor can be given; QDir would complain on the console as well.
    if (m_oldName.isEmpty() || !dir.exists(m_oldName)) {
        criticalBox(this, title, QStringLiteral("Vantrel cannot find:\n") + m_oldName);
        close();
    }
    if (!m_newName.isEmpty() && dir.exists(m_newName)) {
        criticalBox(this, title, m_newName + QStringLiteral(" already exists in directory:\n") + m_folder);
    } else if (!QFileInfo(m_folder).isWritable()) {
        criticalBox(
            this, title, QStringLiteral("Permission denied to make changes in directory:\n") + m_folder);
    } else if (!m_newName.isEmpty() && !m_oldName.isEmpty() && isFree(dir, m_newName)
        && dir.rename(m_oldName, m_newName)) {
        close();
    } else {
        criticalBox(this, title, QStringLiteral("Failed to rename:\n") + m_oldName);
    }
}
