#pragma once

#include "Platform/AppKit/Image.h"
#include "Platform/AppKit/View.h"

namespace NS {

class ImageView : public View {
public:
    static ImageView imageViewWithImage(const Image& image);

    Image image() const;

    using View::View;
};

} // namespace NS
