# The one place that names the product.
set(PRODUCT_NAME "Vantorel")
set(PRODUCT_BUNDLE_IDENTIFIER "com.korvex.vantorel")
set(PRODUCT_VERSION "1.0.0")
# A reserved name: until a real server is set here, nobody's is ever asked by mistake.
set(PRODUCT_UPDATE_HOST "korvex.example")
set(PRODUCT_MINIMUM_MACOS "13.0")
set(PRODUCT_COPYRIGHT "Copyright © 2026 The Vantorel developers")
