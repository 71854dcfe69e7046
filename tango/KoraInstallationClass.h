#pragma once

#include <tango/tango.h>

#include <vector>

namespace kora {

/// The attributes, commands and properties of KoraInstallation, made from the tables of scalars and arrays. One object
/// in the server; TANGO's main thread.
class KoraInstallationClass : public Tango::DeviceClass
{
public:
    static KoraInstallationClass* init();

protected:
    explicit KoraInstallationClass(std::string& name);

    void device_factory(const Tango::DevVarStringArray* names) override;
    void attribute_factory(std::vector<Tango::Attr*>& attributes) override;
    void command_factory() override;

private:
    void describeProperties();
};

} // namespace kora
