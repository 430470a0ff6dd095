#include "tests/support/HeldDialog.h"

#include "app/aGlobal.h"

#include <QCoreApplication>
#include <QLabel>
#include <QProgressBar>
#include <QTimerEvent>

HeldDialog::HeldDialog(int kind)
    : m_shim(m_dir.path())
{
    gslDragList = QStringList{m_dir.file("item", "x")};
    gsDropBase = m_dir.path("to");
    m_shim.before("lstat", "item", 1, [this] {
        m_reached.release();
        m_go.acquire();
    });
    m_panel.show();
    dialog = new MProgress(&m_panel, kind);
    m_reached.acquire();
}

HeldDialog::~HeldDialog()
{
    m_go.release();
    delete dialog;
}

QString HeldDialog::text(const char* label) const
{
    return dialog->findChild<QLabel*>(label)->text();
}

int HeldDialog::bar() const
{
    return dialog->findChild<QProgressBar*>("progressBar")->value();
}

void HeldDialog::tick() const
{
    QTimerEvent event(-1); // whatever timer
    QCoreApplication::sendEvent(dialog, &event);
}
