#include "tango/KoraInstallationClass.h"

#include "hardware/LoopConfiguration.h"
#include "tango/ArrayTable.h"
#include "tango/KoraInstallation.h"
#include "tango/ScalarTable.h"

namespace kora {

namespace {

KoraInstallation* installation(Tango::DeviceImpl* device)
{
    return static_cast<KoraInstallation*>(device);
}

long dataType(ScalarType type)
{
    switch (type) {
    case ScalarType::Double:
        return Tango::DEV_DOUBLE;
    case ScalarType::Integer:
        return Tango::DEV_SHORT;
    case ScalarType::Boolean:
        return Tango::DEV_BOOLEAN;
    case ScalarType::Enumeration:
        return Tango::DEV_ENUM;
    case ScalarType::Text:
        break;
    }
    return Tango::DEV_STRING;
}

/// The loop whose set-point an attribute is, or -1.
int setpointLoop(const std::string& name)
{
    if (name == "SetpointX")
        return LoopXlf;
    return name == "SetpointY" ? LoopYlf : -1;
}

void describe(Tango::Attr& attribute, Tango::UserDefaultAttrProp& properties, const std::string& label,
              const std::string& description, const std::string& unit)
{
    properties.set_label(label.c_str());
    properties.set_description(description.c_str());
    if (!unit.empty())
        properties.set_unit(unit.c_str());
    attribute.set_default_properties(properties);
    attribute.set_disp_level(Tango::OPERATOR);
}

class ScalarAttribute : public Tango::Attr
{
public:
    explicit ScalarAttribute(const Scalar& scalar)
        : Tango::Attr(scalar.name.c_str(), dataType(scalar.type),
                      setpointLoop(scalar.name) >= 0 ? Tango::READ_WRITE : Tango::READ),
          scalar(scalar)
    {
        Tango::UserDefaultAttrProp properties;
        if (scalar.type == ScalarType::Double) {
            properties.set_format(scalar.format.c_str());
            properties.set_event_abs_change(scalar.change.c_str());
            properties.set_archive_event_abs_change(scalar.change.c_str());
        } else if (scalar.type == ScalarType::Integer) {
            properties.set_event_abs_change("1");
            properties.set_archive_event_abs_change("1");
        } else if (scalar.type == ScalarType::Enumeration) {
            std::vector<std::string> choices = scalar.choices;
            properties.set_enum_labels(choices);
        }
        // An archive has a value of each attribute at least this often, in milliseconds.
        properties.set_archive_event_period("60000");
        describe(*this, properties, scalar.label, scalar.description, scalar.unit);
    }

    void read(Tango::DeviceImpl* device, Tango::Attribute& attribute) override
    {
        installation(device)->readScalar(attribute, scalar);
    }

    void write(Tango::DeviceImpl* device, Tango::WAttribute& attribute) override
    {
        Tango::DevDouble value = 0;
        attribute.get_write_value(value);
        installation(device)->writeSetpoint(setpointLoop(scalar.name), value);
    }

    bool same_type(const std::type_info& type) override { return type == typeid(Tango::DevShort); }
    std::string get_enum_type() override { return scalar.name; }

private:
    const Scalar& scalar;
};

class ArrayAttribute : public Tango::SpectrumAttr
{
public:
    explicit ArrayAttribute(const Array& array)
        : Tango::SpectrumAttr(array.name.c_str(), Tango::DEV_DOUBLE, Tango::READ, array.longest), array(array)
    {
        Tango::UserDefaultAttrProp properties;
        describe(*this, properties, array.label, array.description, array.unit);
    }

    void read(Tango::DeviceImpl* device, Tango::Attribute& attribute) override
    {
        installation(device)->readArray(attribute, array);
    }

private:
    const Array& array;
};

/// A command without argument and answer.
class Action : public Tango::Command
{
public:
    Action(const char* name, const char* answer, void (KoraInstallation::*act)())
        : Tango::Command(name, Tango::DEV_VOID, Tango::DEV_VOID, "", answer, Tango::OPERATOR), act(act)
    {
    }

    CORBA::Any* execute(Tango::DeviceImpl* device, const CORBA::Any&) override
    {
        (installation(device)->*act)();
        return new CORBA::Any;
    }

private:
    void (KoraInstallation::*act)();
};

class SnapshotCommand : public Tango::Command
{
public:
    SnapshotCommand()
        : Tango::Command("Snapshot", Tango::DEV_VOID, Tango::DEV_STRING, "",
                         "All scalars as one JSON object, with qualities, units and the time of the poll",
                         Tango::OPERATOR)
    {
    }

    CORBA::Any* execute(Tango::DeviceImpl* device, const CORBA::Any&) override
    {
        return insert(installation(device)->snapshotAsJson().c_str());
    }
};

} // namespace

KoraInstallationClass* KoraInstallationClass::init()
{
    static KoraInstallationClass* const instance = [] {
        std::string name = "KoraInstallation";
        return new KoraInstallationClass(name);
    }();
    return instance;
}

KoraInstallationClass::KoraInstallationClass(std::string& name) : Tango::DeviceClass(name)
{
    describeProperties();
}

void KoraInstallationClass::describeProperties()
{
    std::string name = "PollPeriod";
    std::string description = "Milliseconds from one poll of the installation to the next, 100 to 60000";
    std::string value = "1000";
    add_wiz_dev_prop(name, description, value);
    name = "AllowCommands";
    description = "Whether clients may command: enable and disable the feedback, reset it, move set-points";
    value = "false";
    add_wiz_dev_prop(name, description, value);
    name = "WindowRecords";
    description = "Records of the waveforms, 1 to 14336";
    value = "14336";
    add_wiz_dev_prop(name, description, value);
}

void KoraInstallationClass::device_factory(const Tango::DevVarStringArray* names)
{
    for (CORBA::ULong i = 0; i < names->length(); ++i) {
        auto* const device = new KoraInstallation(this, (*names)[i]);
        device_list.push_back(device);
        if (Tango::Util::_UseDb && !Tango::Util::_FileDb)
            export_device(device);
        else
            export_device(device, (*names)[i]);
    }
}

void KoraInstallationClass::attribute_factory(std::vector<Tango::Attr*>& attributes)
{
    for (const Scalar& scalar : scalarTable())
        attributes.push_back(new ScalarAttribute(scalar));
    for (const Array& array : arrayTable())
        attributes.push_back(new ArrayAttribute(array));
}

void KoraInstallationClass::command_factory()
{
    command_list.push_back(new Action("EnableFeedback", "", &KoraInstallation::enableFeedback));
    command_list.push_back(new Action("DisableFeedback", "", &KoraInstallation::disableFeedback));
    command_list.push_back(new Action("ResetController", "", &KoraInstallation::resetController));
    command_list.push_back(new SnapshotCommand);
}

} // namespace kora
