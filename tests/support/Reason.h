#pragma once

#include <QString>

#include <cstring>

/// @return what the system calls an error, as boxes show it
inline QString reason(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}
