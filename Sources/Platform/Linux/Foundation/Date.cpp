#include "Platform/Foundation/Date.h"

#include "Platform/Linux/Seam.h"

namespace NS {

Date Date::date() {
    return Linux::now();
}

} // namespace NS
