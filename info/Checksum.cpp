#include "info/Checksum.h"

#include "app/MessageBoxes.h"
#include "app/Truncated.h"
#include "app/WorkerThread.h"
#include "info/ChecksumWorker.h"
#include "info/StatisticsBox.h"
#include "ui_Checksum.h"

#include <QClipboard>
#include <QFile>
#include <QFileInfo>

namespace {

constexpr int checksumRefreshMs = 100;

} // namespace

Checksum::Checksum(QWidget* parent, const QString& pathToRead)
    : QDialog(parent)
    , path(pathToRead)
    , m_ui(std::make_unique<Ui::Checksum>())
{
    buildForm();
    setModal(true); // exec() cannot make a dialog modal that is shown already
    show();
    checkFile();
    total = QFileInfo(path).size();
    startTimer(checksumRefreshMs, Qt::CoarseTimer);
    m_thread = std::make_unique<WorkerThread>(new ChecksumWorker(this), this);
}

Checksum::~Checksum()
{
    running = 0;
}

void Checksum::reject()
{
    running = 0;
    QDialog::reject();
}

void Checksum::isfinished()
{
    running = 0;
    m_ui->MD5->setText(md5Text);
    m_ui->SHA1->setText(sha1Text);
    m_ui->OKButton->setText(QStringLiteral("&OK"));
}

void Checksum::timerEvent(QTimerEvent* /*event*/)
{
    const float share = static_cast<float>(done) / static_cast<float>(total);
    m_ui->progressBar->setValue(truncated(share * 100.0F));
}

void Checksum::on_OKButton_clicked()
{
    if (running == 0) {
        close();
        return;
    }
    running = 0;
    m_ui->OKButton->setText(QStringLiteral("&OK"));
}

void Checksum::on_CopyClipButton_clicked()
{
    // From the fields, which are empty until the worker has ended: its texts are not to be read before that.
    const QString text = path + QStringLiteral("\nMD5:  ") + m_ui->MD5->text() + QStringLiteral("\nSHA1: ")
        + m_ui->SHA1->text();
    QGuiApplication::clipboard()->setText(text, QClipboard::Clipboard);
}

void Checksum::buildForm()
{
    m_ui->setupUi(this);
    styleStatisticsBox(m_ui->groupBox);
    const QString readOnly = QStringLiteral("ReadOnly"); // the name that style sheets know such fields by
    m_ui->myPath->setObjectName(readOnly);
    m_ui->MD5->setObjectName(readOnly);
    m_ui->SHA1->setObjectName(readOnly);
    m_ui->myPath->setText(path);
}

void Checksum::checkFile()
{
    QFile file(path);
    if (!ChecksumWorker::openForReading(file)) {
        criticalBox(this, QStringLiteral("Error"),
            QStringLiteral("File: ") + path + QStringLiteral("\nCannot be read.\n") + file.errorString());
        QMetaObject::invokeMethod(this, "close", Qt::QueuedConnection);
    }
}
