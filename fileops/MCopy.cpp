#include "fileops/MCopy.h"

#include "ui_MCopy.h"

MCopy::MCopy(QWidget* parent)
    : QDialog(parent)
    , ui(std::make_unique<Ui::MCopy>())
{
    ui->setupUi(this);
}

MCopy::~MCopy() = default;

void MCopy::on_pushButton_OK_clicked()
{
    destination = ui->lineEdit->text();
    close();
}

void MCopy::on_pushButton_Cancel_clicked()
{
    destination.clear();
    close();
}
