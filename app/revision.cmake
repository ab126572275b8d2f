# Writes a header with the revision of the sources, empty where there is none.
set(revision "")
if(GIT AND EXISTS "${SOURCE}/.git")
    execute_process(COMMAND "${CMAKE_COMMAND}" -E env GIT_OPTIONAL_LOCKS=0
            "${GIT}" -C "${SOURCE}" describe --always --dirty --abbrev=10
        OUTPUT_VARIABLE revision OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
set(text "#pragma once\n\n#define TABWEAVE_REVISION \"${revision}\"\n")
set(old "")
if(EXISTS "${HEADER}")
    file(READ "${HEADER}" old)
endif()
if(NOT text STREQUAL old)
    file(WRITE "${HEADER}" "${text}")
endif()
