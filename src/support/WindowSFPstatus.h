#pragma once

#include <QDialog>

#include <memory>

struct SFPinfo;

namespace Ui {
class WindowSFPstatus;
}

/// What sits in the four SFP ports: picture, name and numbers of each module. It fills its table by a timer
/// of its own while it is visible. GUI thread; it reads the ports without a lock while the poll writes them,
/// so that an entry may be empty or half-new for up to one second.
class WindowSFPstatus : public QDialog
{
    Q_OBJECT

public:
    explicit WindowSFPstatus(QWidget* parent = nullptr);
    ~WindowSFPstatus() override;

private slots:
    void updateSFPdata();

private:
    void fillColumn(int port, const SFPinfo& info);

    std::unique_ptr<Ui::WindowSFPstatus> ui;
};
