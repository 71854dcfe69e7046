#pragma once

class ConfigFile;

/// One of ConfigFile's readers of a controller's ten parameters, such as &ConfigFile::readPIDXlf.
using PidReader = void (ConfigFile::*)(double*, double*, double*, double*, double*, double*, double*, double*, double*,
                                       double*);

/// Output offset of a controller as the settings file has it, V.
double pidOffset(PidReader read);
