#include "Platform/AppKit/DatePicker.h"

#include "Platform/Foundation/Calendar.h"
#include "Platform/Linux/AppKit/EditField.h"

#include <QLocale>
#include <QRegularExpression>
#include <QSignalBlocker>
#include <QStyleOptionSpinBox>
#include <QTimeEdit>

namespace Linux {

namespace {

/// How the user's region writes hours and minutes. Some write seconds too.
QString hoursAndMinutes() {
    static const QRegularExpression seconds(QStringLiteral("[^A-Za-z']?s+(\\.z+)?"));
    return QLocale().timeFormat(QLocale::ShortFormat).remove(seconds);
}

class TimeEdit final : public QTimeEdit {
public:
    TimeEdit() {
        setDisplayFormat(hoursAndMinutes());
        setWrapping(true);
        setKeyboardTracking(false); // no action while a number is half typed
    }

    int textBaseline() const {
        QStyleOptionSpinBox option;
        initStyleOption(&option);
        // QLineEdit::paintEvent, unlike a style, rounds the room above the text up (Qt 6.4).
        return baselineOf(*this, QStyle::CC_SpinBox, option, QStyle::SC_SpinBoxEditField, /*rounding=*/1);
    }
};

struct DatePickerNative : ViewNative {
    explicit DatePickerNative(TimeEdit* edit) : ViewNative(edit), edit(edit) {
        QObject::connect(edit, &QTimeEdit::userTimeChanged, edit, [this](QTime time) { pick(time); });
    }

    int firstBaseline() const override { return edit->textBaseline(); }

    void setDate(const Date& newDate) {
        date = newDate;
        const auto calendar = Calendar::currentCalendar();
        const QSignalBlocker quietly(edit.data());
        edit->setTime(QTime(static_cast<int>(calendar.component(CalendarUnit::Hour, date)),
                            static_cast<int>(calendar.component(CalendarUnit::Minute, date))));
    }

    QPointer<TimeEdit> edit;
    DatePickerStyle style = DatePickerStyle::TextFieldAndStepper;
    DatePickerElementFlags elements = DatePickerElementFlags::HourMinute;
    Date date = Date::date();

private:
    // A time that the clock skips that day gives another one, which then shows.
    void pick(QTime time) {
        setDate(Calendar::currentCalendar().dateBySettingHour(time.hour(), time.minute(), 0, date).value_or(date));
        sendAction();
    }
};

} // namespace

template <>
struct NativeOf<DatePicker> : std::type_identity<DatePickerNative> {};

} // namespace Linux

namespace NS {

using namespace Linux;

DatePicker DatePicker::initWithFrame(const Rect&) {
    return handle<DatePicker>(std::make_shared<DatePickerNative>(new TimeEdit));
}

void DatePicker::setDatePickerStyle(DatePickerStyle style) {
    native(*this).style = style;
}

DatePickerStyle DatePicker::datePickerStyle() const {
    return native(*this).style;
}

void DatePicker::setDatePickerElements(DatePickerElementFlags elements) {
    native(*this).elements = elements;
}

DatePickerElementFlags DatePicker::datePickerElements() const {
    return native(*this).elements;
}

void DatePicker::setDateValue(const Date& date) {
    native(*this).setDate(date);
}

Date DatePicker::dateValue() const {
    return native(*this).date;
}

} // namespace NS
