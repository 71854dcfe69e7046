#pragma once

#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "stream/PlotData.h"
#include "stream/Updater.h"
#include "support/World.h"

#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <vector>

/// A program without windows: an Updater with data registered as the main window does, fed by the double.
class Window
{
public:
    Window()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
    }

    /// Registers data that outlive the updates. @return the data
    QCPDataMap* registered(int kind, int channel = 0)
    {
        maps.push_back(std::make_unique<QCPDataMap>());
        updater->setGraphData(kind, channel, maps.back().get());
        return maps.back().get();
    }

    /// Every slot of record i of a block is what the function says.
    static void setSlots(std::function<double(int record, int slot)> value)
    {
        koralink_double::answers().fillBlock = [value](DisplayRecord* block, int count) {
            for (int record = 0; record < count; ++record) {
                for (int slot = 0; slot < slotsPerRecord; ++slot) {
                    const double number = value(record, slot);
                    std::memcpy(reinterpret_cast<char*>(&block[record]) + 8 * slot, &number, sizeof number);
                }
            }
        };
    }

    static void setRecords(int count) { dispBufferBytes = count * 256; }

private:
    std::unique_ptr<World> world;
    std::vector<std::unique_ptr<QCPDataMap>> maps;
};

/// What a map from key to value holds after these points went in, one by one.
using PointMap = std::map<double, double>;

inline PointMap contentOf(const QCPDataMap* map)
{
    PointMap content;
    for (auto point = map->constBegin(); point != map->constEnd(); ++point)
        content.emplace(point->key, point->value);
    return content;
}

/// Order and uniqueness of the keys, which the container itself does not see to.
inline bool isOrderedAsMap(const QCPDataMap* map)
{
    for (auto point = map->constBegin(); point != map->constEnd(); ++point) {
        if (point->key != point->key)
            return false;
        if (point + 1 != map->constEnd() && !(point->key < (point + 1)->key))
            return false;
    }
    return true;
}
