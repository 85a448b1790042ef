// Stores two complete states in turn, as fast as it can, until it is killed: WriteDefaults <file>
// Prints a line once the first is stored.

#include "Platform/Linux/Foundation/PropertyListStore.h"

#include <cstdio>
#include <string>

namespace {

bool storeState(Linux::PropertyListStore& store, int state) {
    store.setValue(state, "a");
    store.setValue(std::string(2048, state == 0 ? 'x' : 'y'), "text");
    store.setValue(state, "b");
    return store.write();
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: WriteDefaults <file>\n", stderr);
        return 2;
    }
    Linux::PropertyListStore store(argv[1]);
    for (int round = 0; storeState(store, round % 2); ++round) {
        if (round == 0) {
            std::puts("writing");
            std::fflush(stdout);
        }
    }
    std::fputs("a state could not be stored\n", stderr);
    return 1;
}
