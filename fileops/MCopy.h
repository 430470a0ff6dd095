#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class MCopy;
}

/// Asks where the selected items are to be copied. Run with exec() and read afterwards.
class MCopy : public QDialog
{
    Q_OBJECT

public:
    explicit MCopy(QWidget* parent);
    ~MCopy() override;

    /// What was typed, as it was typed, once OK was chosen. Empty otherwise: then nothing is to be done.
    QString destination;

public slots:
    void on_pushButton_OK_clicked();
    void on_pushButton_Cancel_clicked();

private:
    std::unique_ptr<Ui::MCopy> ui;
};
