#include "tests/support/TypedAnswers.h"

#include "commands/DialogNewDir.h"
#include "commands/Rename.h"
#include "fileops/MCopy.h"
#include "tests/support/FormChild.h"
#include "tests/support/ModalAnswers.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTest>

namespace {

template <typename Dialog>
void type(ModalAnswers& answers, const QString& text, const char* field, const char* button)
{
    answers.meet<Dialog>([=](Dialog* dialog) {
        formChild<QLineEdit>(*dialog, field).setText(text);
        QTest::mouseClick(&formChild<QPushButton>(*dialog, button), Qt::LeftButton);
    });
}

} // namespace

void typeDestination(ModalAnswers& answers, const QString& text)
{
    type<MCopy>(answers, text, "lineEdit", "pushButton_OK");
}

void typeNewFolder(ModalAnswers& answers, const QString& text)
{
    type<DialogNewDir>(answers, text, "lineEdit", "pushButtonOK");
}

void typeNewName(ModalAnswers& answers, const QString& text)
{
    type<Rename>(answers, text, "lineEditNew", "pushButtonOK");
}
