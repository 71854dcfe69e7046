#include "tools/PidOffset.h"

#include "app/Globals.h"
#include "hardware/ConfigFile.h"

double pidOffset(PidReader read)
{
    double others[9];
    double offset = 0;
    (configFile->*read)(&others[0], &others[1], &others[2], &others[3], &others[4], &others[5], &others[6], &others[7],
                        &others[8], &offset);
    return offset;
}
