#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class Rename;
}

/// Asks for the new name of one item and renames it within its folder. Run with exec(); the caller owns it
/// and needs no result, since the views find the change themselves.
class Rename : public QDialog
{
    Q_OBJECT

public:
    /// @param parent window that the dialog is modal to
    /// @param path full path of the item
    Rename(QWidget* parent, const QString& path);
    ~Rename() override;

private slots:
    void on_pushButtonOK_clicked();
    void on_pushButtonCancel_clicked();

private:
    void renameItem();

    QString m_folder;
    QString m_oldName;
    QString m_newName;
    std::unique_ptr<Ui::Rename> m_ui;
};
