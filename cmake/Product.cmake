# The facts about the product that the builds, the bundle and the packages share. The name decides the bundle, the
# executable and the temporary files. It does not decide the texts of the interface (L10n.cpp), the reason of the power
# assertion (SleepGuard.cpp), the name of the update manifest (Updater.cpp), or the names of files in Packaging and Tests:
# who renames the product changes those too.
set(PRODUCT_NAME "Vantorel")
set(PRODUCT_BUNDLE_IDENTIFIER "com.korvex.vantorel")
set(PRODUCT_VERSION "1.0.0")
# A reserved name: until a real server is set here, nobody's is ever asked by mistake.
set(PRODUCT_UPDATE_HOST "korvex.example")
set(PRODUCT_MINIMUM_MACOS "13.0")
set(PRODUCT_COPYRIGHT "Copyright © 2026 The Vantorel developers")
