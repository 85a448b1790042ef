#pragma once

#include "Platform/AppKit/Control.h"
#include "Platform/Foundation/Date.h"

namespace NS {

enum class DatePickerStyle : unsigned long { TextFieldAndStepper = 0 };
enum class DatePickerElementFlags : unsigned long { HourMinute = 0x0c };

/// A date to pick (NSDatePicker), here always its time of day in the time zone in force, written as the user's region
/// writes it.
class DatePicker : public Control {
public:
    static DatePicker initWithFrame(const Rect& frame);

    void setDatePickerStyle(DatePickerStyle style);
    DatePickerStyle datePickerStyle() const;
    void setDatePickerElements(DatePickerElementFlags elements);
    DatePickerElementFlags datePickerElements() const;

    /// Does not run the action.
    void setDateValue(const Date& date);
    /// What was set, with the time of day that the user has picked since.
    Date dateValue() const;

    using Control::Control;
};

} // namespace NS
