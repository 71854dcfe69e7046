#pragma once

#include <QElapsedTimer>
#include <QGenericPlugin>
#include <QPointer>
#include <QTimer>
#include <QWidget>

/// Sets the scene of a measurement in the unchanged program, which it joins as a plugin and knows by class and object
/// names alone. KORA_SCENE: "floated" lets every plot float and transforms 8192 points; "walk N" walks the 3D rocking
/// curve with a step of N ms and prints the seconds that it took.
class Scene : public QObject
{
    Q_OBJECT

public:
    Scene();

private slots:
    void look();
    void stepWalk();

private:
    void floatPlots(QWidget* mainWindow);
    void startWalk(QWidget* mainWindow, double stepMs);

    QTimer looking;
    QPointer<QWidget> walkWindow;
};

class ScenePlugin : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "scene.json")

public:
    QObject* create(const QString& name, const QString& settings) override;
};
