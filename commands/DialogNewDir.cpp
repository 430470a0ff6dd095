#include "commands/DialogNewDir.h"

#include "app/MessageBoxes.h"
#include "ui_DialogNewDir.h"

#include <QDir>
#include <QFileInfo>

DialogNewDir::DialogNewDir(QWidget* parent, const QString& folder)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::DialogNewDir>())
    , m_folder(folder)
{
    m_ui->setupUi(this);
    m_ui->label_Path->setText(m_folder);
}

DialogNewDir::~DialogNewDir() = default;

void DialogNewDir::on_pushButtonOK_clicked()
{
    makeFolder(m_ui->lineEdit->text());
}

void DialogNewDir::on_pushButtonCancel_clicked()
{
    close();
}

void DialogNewDir::makeFolder(const QString& name)
{
    const QString title = QStringLiteral("Error");
    const QString fullPath = m_folder + QLatin1Char('/') + name;
    QDir dir{QString()};
    if (!dir.cd(m_folder)) {
        criticalBox(this, title, QStringLiteral("Vantrel cannot access directory:\n") + m_folder);
        // No return: it is wanted that the checks go on, in the working folder, after the dialog has closed.
        close();
    }
    // An empty name is nothing that exists or can be made; QDir would complain on the console as well.
    if (!name.isEmpty() && dir.exists(name)) {
        criticalBox(this, title, name + QStringLiteral(" already exists in directory:\n") + m_folder);
    } else if (!QFileInfo(m_folder).isWritable()) {
        criticalBox(this, title, QStringLiteral("Permission denied to write in directory:\n") + m_folder);
    } else if (!name.isEmpty() && dir.mkdir(name)) {
        close();
    } else {
        criticalBox(this, title, QStringLiteral("Failed to create:\n") + fullPath);
    }
}
