#pragma once

#include "check/Finding.h"

#include <QMap>
#include <QPair>

struct ConfigLine;

/// Reads a settings file as the program does, and finds what the program passes over. Writes nothing. Fills
/// the settings of aGlobal, which are expected to be empty; needs a QApplication.
class SettingsCheck
{
public:
    /// @return false where the file cannot be opened
    bool read(const QString& path);
    /// @return what was found, by line
    Findings findings() const;

private:
    bool isTooLong(const ConfigLine& line);
    void take(const ConfigLine& line);
    void takeUnknown(const ConfigLine& line);
    void takeIcon(const ConfigLine& line);
    void takeDrive(const ConfigLine& line);
    void takeWindow(const ConfigLine& line);
    void takeNoRecurse(const ConfigLine& line);
    void takeAssociation(const ConfigLine& line);
    void takeMenu(const ConfigLine& line);
    void takeTypes(int line, const QString& types);
    void takeMenuCommand(const ConfigLine& line);
    void takeSuffixes(int line, const QStringList& suffixes);

    void add(int line, const char* kind, const QString& text);
    bool missing(int line, const QString& field, const char* what);
    void onlyOnce(const ConfigLine& line);

    Findings m_findings;
    QList<QPair<int, QString>> m_style;
    QMap<QString, int> m_lineOfKey;
    QMap<QString, int> m_lineOfSuffix;
};
