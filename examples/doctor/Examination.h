#ifndef EXAMINATION_H
#define EXAMINATION_H

#include "Report.h"

/// Looks at everything that the start-up of this executable has settled. AppConfig must be initialised.
Report examine();

#endif
