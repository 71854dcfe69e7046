#pragma once

#include <QGenericPlugin>

/// Lets the unchanged program be played by the tour: Qt loads it at start where QT_QPA_GENERIC_PLUGINS names
/// it.
class TourPlugin : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "tour.json")

public:
    QObject* create(const QString& name, const QString& settings) override;
};
