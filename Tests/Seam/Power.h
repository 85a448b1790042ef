#pragma once

#include "Platform/IOKit/IOPMLib.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

/// The power service of the unit tests: it holds what it is asked to, and refuses when told to.
namespace Seam {

struct Assertion {
    std::string type;
    NS::IOPMAssertionLevel level = NS::IOPMAssertionLevel::Off;
    std::string name;
};

struct Power {
    bool refuses = false;
    std::function<void()> whenAsked = {}; // before each creation
    std::map<NS::IOPMAssertionID, Assertion> held;
    int creations = 0; // asked for, refused ones included
    std::vector<NS::IOPMAssertionID> releases;
    NS::IOPMAssertionID initialID = 0; // what the caller's identifier held at the last creation
};

Power& power();

} // namespace Seam
