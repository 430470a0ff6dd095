#include "app/ReadConfig.h"

void ReadConfig(QString /*path*/) { }
