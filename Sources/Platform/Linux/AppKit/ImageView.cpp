#include "Platform/AppKit/ImageView.h"

#include "Platform/Linux/AppKit/ImageNative.h"
#include "Platform/Linux/AppKit/ViewNative.h"

#include <QPainter>

namespace Linux {

namespace {

class ImageWidget : public QWidget {
public:
    explicit ImageWidget(std::shared_ptr<ImageNative> image) : image_(std::move(image)) {}

    QSize sizeHint() const override { return QSizeF(image_->size.width, image_->size.height).toSize(); }

protected:
    void paintEvent(QPaintEvent*) override {
        QImage picture = image_->render(devicePixelRatioF(), palette().color(QPalette::WindowText));
        picture.setDevicePixelRatio(devicePixelRatioF());
        QPainter(this).drawImage(0, 0, picture);
    }

private:
    std::shared_ptr<ImageNative> image_;
};

struct ImageViewNative : ViewNative {
    ImageViewNative(QWidget* widget, const Image& image) : ViewNative(widget), image(image) {}
    Image image;
};

} // namespace

} // namespace Linux

namespace NS {

using namespace Linux;

ImageView ImageView::imageViewWithImage(const Image& image) {
    auto* widget = new ImageWidget(shared(image));
    return handle<ImageView>(std::make_shared<ImageViewNative>(widget, image));
}

Image ImageView::image() const {
    return object<ImageViewNative>(*this).image;
}

} // namespace NS
