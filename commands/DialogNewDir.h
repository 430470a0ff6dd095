#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class DialogNewDir;
}

/// Asks for the name of a new folder and makes it. Run with exec(); the caller owns it and needs no result,
/// since the views find the folder themselves.
class DialogNewDir : public QDialog
{
    Q_OBJECT

public:
    /// @param parent window that the dialog is modal to
    /// @param folder folder to make the new one in, an absolute path
    DialogNewDir(QWidget* parent, const QString& folder);
    ~DialogNewDir() override;

private slots:
    void on_pushButtonOK_clicked();
    void on_pushButtonCancel_clicked();

private:
    void makeFolder(const QString& name);

    std::unique_ptr<Ui::DialogNewDir> m_ui;
    QString m_folder;
};
