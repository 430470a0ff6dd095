#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

class QWidget;

/// Looks at every window that is shown while it lives, whether it shows a name as it is: as plain text
/// without a shortcut, and so that assistive technology says the same.
class TextWatch : public QObject
{
public:
    /// @param name that could be taken for more than a name
    explicit TextWatch(QString name);

    bool eventFilter(QObject* watched, QEvent* event) override;

    /// Looks through a window as it is now.
    void look(QWidget* window);

    int windows = 0; ///< that were looked at
    int texts = 0; ///< labels and buttons that show the name
    QStringList faults; ///< in words; empty where all is right

private:
    void lookAt(QWidget* widget);
    void check(bool isRight, const QWidget* widget, const char* fault);

    QString m_name;
};
