#include "Platform/AppKit/PopUpButton.h"

#include "Platform/macOS/Conversions.h"

#import <AppKit/AppKit.h>

namespace NS {

using namespace macOS;

PopUpButton PopUpButton::initWithFrame(const Rect& frame, bool pullsDown) {
    return handle<PopUpButton>([[NSPopUpButton alloc] initWithFrame:toNSRect(frame) pullsDown:pullsDown]);
}

void PopUpButton::addItemsWithTitles(const std::vector<std::string>& titles) {
    NSMutableArray<NSString*>* array = [NSMutableArray arrayWithCapacity:titles.size()];
    for (const auto& title : titles) {
        [array addObject:toNSString(title)];
    }
    [object<NSPopUpButton>(*this) addItemsWithTitles:array];
}

std::vector<std::string> PopUpButton::itemTitles() const {
    std::vector<std::string> titles;
    forEach([object<NSPopUpButton>(*this) itemTitles], [&](NSString* title) { titles.push_back(toString(title)); });
    return titles;
}

void PopUpButton::selectItemAtIndex(long index) {
    [object<NSPopUpButton>(*this) selectItemAtIndex:index];
}

long PopUpButton::indexOfSelectedItem() const {
    return [object<NSPopUpButton>(*this) indexOfSelectedItem];
}

} // namespace NS
