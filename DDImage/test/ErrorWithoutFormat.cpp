#include "DDImage/Op.h"

// Must not compile: a text with a percent sign would be taken for a format.
void report(DD::Image::Op& op, const char* text) { op.error(text); }
