# The tests that need no world of the tests' own, for macOS. On a Mac they are run; cross-built they are compiled and linked.
file(GLOB portable_tests CONFIGURE_DEPENDS Unit/Portable/*.cpp)
add_executable(PortableTests ${portable_tests} Support/HTTPServer.cpp)
target_include_directories(PortableTests PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(PortableTests PRIVATE Warnings VantorelCore Platform)

if(CMAKE_CROSSCOMPILING)
    set(googletest /usr/src/googletest/googletest) # Debian's package of its sources
    add_library(GoogleTest STATIC ${googletest}/src/gtest-all.cc ${googletest}/src/gtest_main.cc)
    target_include_directories(GoogleTest SYSTEM PUBLIC ${googletest}/include PRIVATE ${googletest})
    target_link_libraries(PortableTests PRIVATE GoogleTest)
else()
    find_package(GTest REQUIRED)
    target_link_libraries(PortableTests PRIVATE GTest::gtest_main)
    # Homebrew's library is for one processor, unlike the program that is tested.
    set_target_properties(PortableTests PROPERTIES OSX_ARCHITECTURES ${CMAKE_HOST_SYSTEM_PROCESSOR})
    # The first start of a new program is looked into by the system, which takes its time.
    gtest_discover_tests(PortableTests DISCOVERY_TIMEOUT 60 PROPERTIES LABELS unit FIXTURES_REQUIRED preferences)
    add_test(NAME Portable.no_preferences_stay
             COMMAND sh -c "defaults delete PortableTests; rm -f ~/Library/Preferences/PortableTests.plist")
    set_tests_properties(Portable.no_preferences_stay PROPERTIES LABELS unit FIXTURES_CLEANUP preferences)
endif()
