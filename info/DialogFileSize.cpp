#include "info/DialogFileSize.h"

#include "app/WorkerThread.h"
#include "info/SizeWorkerClass.h"
#include "info/StatisticsBox.h"
#include "ui_DialogFileSize.h"

#include <QFile>
#include <QLocale>
#include <QStorageInfo>

namespace {

constexpr int sizeRefreshMs = 10;

QString grouped(qint64 number)
{
    return QLocale(QLocale::English, QLocale::AnyCountry).toString(static_cast<qlonglong>(number));
}

} // namespace

DialogFileSize::DialogFileSize(QWidget* parent, const QString& pathToCount)
    : QDialog(parent)
    , path(pathToCount)
    , device(QFile::decodeName(QStorageInfo(pathToCount).device()))
    , m_ui(std::make_unique<Ui::DialogFileSize>())
{
    m_ui->setupUi(this);
    styleStatisticsBox(m_ui->groupBox);
    m_ui->label->setText(QString());
    startTimer(sizeRefreshMs, Qt::CoarseTimer);
    m_thread = std::make_unique<WorkerThread>(new SizeWorkerClass(this), this);
}

DialogFileSize::~DialogFileSize()
{
    running = 0;
}

void DialogFileSize::UpdateDisplay()
{
    m_ui->label_Path->setText(path);
    m_ui->label_Device->setText(QStringLiteral("On device: ") + device);
    m_ui->label_Folders->setText(grouped(folderCount));
    m_ui->label_Files->setText(grouped(fileCount));
    m_ui->label_Bytes->setText(grouped(byteCount));
}

void DialogFileSize::reject()
{
    running = 0;
    QDialog::reject();
}

void DialogFileSize::isfinished()
{
    running = 0;
    UpdateDisplay();
    m_ui->pushButton->setText(QStringLiteral("&OK"));
}

void DialogFileSize::timerEvent(QTimerEvent* /*event*/)
{
    if (m_thread->hasStarted()) { // else the zeros would be taken for a count, behind the box that says so
        UpdateDisplay();
    }
}

void DialogFileSize::on_pushButton_clicked()
{
    if (running == 0) {
        close();
        return;
    }
    running = 0;
    m_ui->label->setText(QStringLiteral("Cancelled..."));
    m_ui->pushButton->setText(QStringLiteral("&OK"));
}
