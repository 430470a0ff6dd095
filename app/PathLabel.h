#pragma once

#include <QLabel>

/// A label whose text, where there is no room for all of it, is shown without its middle: of a path, where it
/// begins and how the file is called. text() stays the whole.
class PathLabel : public QLabel
{
public:
    using QLabel::QLabel;

protected:
    void paintEvent(QPaintEvent* event) override;
};
