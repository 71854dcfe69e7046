#pragma once

/// The shared objects of the program as main makes them, without windows and without a worker thread: a test polls by
/// calling mailbox->refreshData(). Construction brings every global to its initial value and clears the settings
/// file; destruction deletes the objects.
class World
{
public:
    World();
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;
};
