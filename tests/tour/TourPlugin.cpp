#include "tour/TourPlugin.h"

#include "tour/Tour.h"

QObject* TourPlugin::create(const QString& name, const QString&)
{
    return name.toLower() == QLatin1String("kora-tour") ? new Tour : nullptr;
}
