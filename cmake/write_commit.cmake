# Writes the commit of the source tree as a header, and only if it has changed:
#     cmake -DSOURCE=... -DHEADER=... -P write_commit.cmake
# A tree with changes of its own carries a + behind it. Outside a git tree it is "unknown".
set(commit "unknown")
find_program(git git)
if(git)
  execute_process(COMMAND ${git} -C ${SOURCE} rev-parse HEAD
                  OUTPUT_VARIABLE head OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE failed ERROR_QUIET)
  execute_process(COMMAND ${git} -C ${SOURCE} rev-parse --show-toplevel
                  OUTPUT_VARIABLE top OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  if(NOT failed AND top STREQUAL SOURCE)
    execute_process(COMMAND ${git} -C ${SOURCE} status --porcelain --untracked-files=no
                    OUTPUT_VARIABLE changes ERROR_QUIET)
    set(commit ${head})
    if(changes)
      string(APPEND commit "+")
    endif()
  endif()
endif()
set(text "#pragma once\n#define KALDRA_COMMIT \"${commit}\"\n")
set(old "")
if(EXISTS ${HEADER})
  file(READ ${HEADER} old)
endif()
if(NOT old STREQUAL text)
  file(WRITE ${HEADER} "${text}")
endif()
