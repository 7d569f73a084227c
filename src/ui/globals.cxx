// Definitions of the global objects. Their order here is their construction order; none of
// their constructors looks at another, and the stores are loaded before any window exists.
#include "globals.h"

AboutDialog aboutDialog;
TodoStore todoStore;
CategoryStore categoryStore;
CategoryDialog categoryDialog;
EntryDialog entryDialog;
