#pragma once

#include <QCache>
#include <QFileIconProvider>
#include <QIcon>
#include <QObject>
#include <QString>

class QFileInfo;

/// The standard icons of files and folders, looked up when they are drawn and remembered for the files drawn
/// last. One for the process, GUI thread only; it goes with the application object.
class FileIcons : public QObject
{
    Q_OBJECT

public:
    static FileIcons& instance();

    /// @param info the file; its facts should have been looked up already
    /// @return the icon that the standard file system model shows for it, never a null one where there are
    /// generic icons
    QIcon icon(const QFileInfo& info);

private:
    explicit FileIcons(QObject* parent);

    QIcon lookUp(const QFileInfo& info) const;

    QFileIconProvider m_provider;
    QCache<QString, QIcon> m_icons; ///< by path, kind and time of the last change
};
