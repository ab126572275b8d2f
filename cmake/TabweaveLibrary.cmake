# tw_library(NAME SOURCES ... [DEPENDS ...])
#
# Makes the static library tw_NAME (alias Tabweave::NAME) of the current folder. It exports only this folder as include
# path, so that an include against the direction of the layers does not compile.
function(tw_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
    add_library(tw_${name} STATIC ${ARG_SOURCES})
    add_library(Tabweave::${name} ALIAS tw_${name})
    target_include_directories(tw_${name} PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}")
    target_link_libraries(tw_${name} PUBLIC Tabweave::flags ${ARG_DEPENDS} PRIVATE ${ARG_PRIVATE_DEPENDS})
    target_precompile_headers(tw_${name} PRIVATE <QHash> <QList> <QObject> <QString> <QStringList> <QVector>
        <algorithm> <functional> <memory> <string> <string_view> <vector>)
endfunction()

# tw_test(NAME [WINDOW] SOURCES ... DEPENDS ...)
#
# One test program per folder: linking costs more than testing. Each source holds one QObject test class, registered
# with TW_TEST_CLASS; the program's main runs all of them. WINDOW: the tests use widgets.
function(tw_test name)
    cmake_parse_arguments(ARG "WINDOW" "" "SOURCES;DEPENDS" ${ARGN})
    set(support tw_testsupport)
    if(ARG_WINDOW)
        set(support tw_windowtestsupport)
    endif()
    add_executable(test_${name} ${ARG_SOURCES})
    target_link_libraries(test_${name} PRIVATE ${ARG_DEPENDS} ${support})
    # Tests hold many short literals; the program does not.
    target_compile_options(test_${name} PRIVATE -UQT_NO_CAST_FROM_ASCII)
    add_test(NAME ${name} COMMAND test_${name})
    set_tests_properties(${name} PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen;TZ=UTC;LC_ALL=C.UTF-8")
    if(ARG_WINDOW)
        # The sanitizers' run leaves these out: font and platform libraries leak at exit.
        set_tests_properties(${name} PROPERTIES LABELS window)
        if(TABWEAVE_SANITIZE)
            set_target_properties(test_${name} PROPERTIES EXCLUDE_FROM_ALL ON)
        endif()
    endif()
endfunction()
