#pragma once

#include <QDialog>

#include <memory>

class QFileInfo;

namespace Ui {
class MProperties;
}

/// Shows the facts of one file or folder, read once when the dialog is made. What the system does not tell
/// stays empty or zero.
class MProperties : public QDialog
{
    Q_OBJECT

public:
    /// @param parent window that the dialog is modal to
    /// @param path full path of the file, folder or link
    MProperties(QWidget* parent, const QString& path);
    ~MProperties() override;

private slots:
    void on_pushButton_clicked();

private:
    void showIcon(const QFileInfo& info);
    void showTimes(const QFileInfo& info);
    void showVolume(const QString& path);

    std::unique_ptr<Ui::MProperties> m_ui;
};
