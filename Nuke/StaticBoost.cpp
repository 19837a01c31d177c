#include <boost/system/error_code.hpp>
#include <locale>
#include <new>
#include <system_error>

// Debian builds its static Boost for programs: it takes the address of this object in a way that a library cannot hand
// on to another library. So the plug-in has its own; nothing reads it, and nobody else sees it.
const std::nothrow_t std::nothrow{};

// For the same reason Boost's own copy of the inline code behind this must not be linked. The linker takes the first
// copy that it sees, and this function, which nobody calls, makes one here.
const std::error_category& linkedSystemCategory();
const std::error_category& linkedSystemCategory() { return boost::system::system_category(); }

// Likewise what Debian 13's copy asks a locale with for the conversion of wide paths. There are none here, so the
// locale, which does not know this object, is never asked.
std::locale::id std::codecvt<wchar_t, char, std::mbstate_t>::id;
