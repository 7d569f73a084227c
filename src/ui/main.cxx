// Program entry. The data files were loaded while the globals were built.
#include "globals.h"

int main() { return 0; }
