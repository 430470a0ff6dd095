#include "tests/support/StandIn.h"

#include <QDir>
#include <QFile>
#include <QTest>

StandIn::StandIn(const TestDir& dir, const QString& relative)
    : m_notes(dir.folder(
        QStringLiteral(".notes-of-") + QString(relative).replace(QLatin1Char('/'), QLatin1Char('-'))))
{
    // A note gets its final name once it is whole. Every text in it ends in a zero byte.
    const QString script = QStringLiteral("#!/bin/sh\n"
                                          "note=\"%1/$(date +%s%N)-$$\"\n"
                                          "printf '%s\\0' \"$(pwd -P)\" \"$@\" >\"$note.part\"\n"
                                          "mv \"$note.part\" \"$note\"\n");
    m_path = dir.file(relative, QString(script).replace(QStringLiteral("%1"), m_notes).toUtf8(), 0755);
}

QVector<StandIn::Call> StandIn::calls() const
{
    QVector<Call> all;
    const QDir notes(m_notes);
    const QStringList names = notes.entryList(QDir::Files, QDir::Name);
    for (const QString& name : names) {
        QFile note(notes.filePath(name));
        if (name.endsWith(QLatin1String(".part")) || !note.open(QIODevice::ReadOnly)) {
            continue;
        }
        QList<QByteArray> texts = note.readAll().split('\0');
        texts.removeLast(); // what follows the last zero byte
        Call call;
        call.folder = QString::fromUtf8(texts.takeFirst());
        for (const QByteArray& text : qAsConst(texts)) {
            call.arguments.append(QString::fromUtf8(text));
        }
        all.append(call);
    }
    return all;
}

StandIn::Call StandIn::next()
{
    return waitForCalls(m_taken + 1) ? calls().at(m_taken++) : Call();
}

bool StandIn::waitForCalls(int count) const
{
    return QTest::qWaitFor([&] { return calls().size() >= count; });
}
