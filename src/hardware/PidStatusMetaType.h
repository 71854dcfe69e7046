#pragma once

#include "hardware/koralink.h"

#include <QMetaType>

Q_DECLARE_METATYPE(PID_Status_Type)
