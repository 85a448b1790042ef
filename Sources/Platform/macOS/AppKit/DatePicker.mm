#include "Platform/AppKit/DatePicker.h"

#include "Platform/macOS/Conversions.h"

#import <AppKit/AppKit.h>

namespace NS {

using namespace macOS;

static_assert(static_cast<NSUInteger>(DatePickerStyle::TextFieldAndStepper) == NSDatePickerStyleTextFieldAndStepper);
static_assert(static_cast<NSUInteger>(DatePickerElementFlags::HourMinute) == NSDatePickerElementFlagHourMinute);

DatePicker DatePicker::initWithFrame(const Rect& frame) {
    return handle<DatePicker>([[NSDatePicker alloc] initWithFrame:toNSRect(frame)]);
}

void DatePicker::setDatePickerStyle(DatePickerStyle style) {
    [object<NSDatePicker>(*this) setDatePickerStyle:static_cast<NSDatePickerStyle>(style)];
}

DatePickerStyle DatePicker::datePickerStyle() const {
    return static_cast<DatePickerStyle>([object<NSDatePicker>(*this) datePickerStyle]);
}

void DatePicker::setDatePickerElements(DatePickerElementFlags elements) {
    [object<NSDatePicker>(*this) setDatePickerElements:static_cast<NSDatePickerElementFlags>(elements)];
}

DatePickerElementFlags DatePicker::datePickerElements() const {
    return static_cast<DatePickerElementFlags>([object<NSDatePicker>(*this) datePickerElements]);
}

void DatePicker::setDateValue(const Date& date) {
    [object<NSDatePicker>(*this) setDateValue:toNSDate(date)];
}

Date DatePicker::dateValue() const {
    return toDate([object<NSDatePicker>(*this) dateValue]);
}

} // namespace NS
