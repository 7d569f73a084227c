// Definitions of the global objects. Their order here is their construction order: the stores
// load their files before any window exists.
#include "globals.h"

TodoStore todoStore;
CategoryStore categoryStore;
