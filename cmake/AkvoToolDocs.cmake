# The tools' manual pages and akvo-lipsync's bash completion, made at build
# time from what the tools' --help prints, so that neither can drift from
# the programs: help2man turns each --help into a page (with the NAME and SEE
# ALSO of cmake/tooldocs/TOOL.h2m, and for akvo-lipsync a COMMANDS section
# made of each subcommand's --help), and the completion's lists are read from
# the same texts. Both need the tools to run on the build machine, so a cross
# build goes without them, as does a machine without help2man.
set(akvo_tooldocs ${PROJECT_SOURCE_DIR}/cmake/tooldocs)
set(akvo_tools akvo-lipsync akvo-lipsync-sim akvo-logcat)
if(CMAKE_CROSSCOMPILING)
  message(STATUS "Cross build: the tools' manual pages and bash completion are skipped")
  return()
endif()
foreach(tool IN LISTS akvo_tools)
  if(NOT TARGET ${tool})
    list(REMOVE_ITEM akvo_tools ${tool})
  endif()
endforeach()
set(akvo_tooldocs_outputs "")

find_program(AKVO_HELP2MAN help2man)
if(NOT AKVO_HELP2MAN)
  message(STATUS "help2man not found: the tools' manual pages are skipped (scripts/setup-deps installs it)")
else()
  # help2man writes into the folder but does not make it, and the pages are
  # made in parallel.
  file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/man)
  foreach(tool IN LISTS akvo_tools)
    set(page ${CMAKE_BINARY_DIR}/man/${tool}.1)
    set(includes --include=${akvo_tooldocs}/${tool}.h2m)
    set(depends ${tool} ${akvo_tooldocs}/${tool}.h2m)
    if(tool STREQUAL "akvo-lipsync")
      set(commands ${CMAKE_BINARY_DIR}/man/${tool}-commands.h2m)
      add_custom_command(OUTPUT ${commands}
        COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:${tool}> -DOUTPUT=${commands}
                -P ${akvo_tooldocs}/Subcommands.cmake
        DEPENDS ${tool} ${akvo_tooldocs}/Subcommands.cmake ${akvo_tooldocs}/ToolHelp.cmake
        COMMENT "Reading the subcommands of ${tool} for its manual page"
        VERBATIM)
      list(APPEND includes --include=${commands})
      list(APPEND depends ${commands})
    endif()
    # Manual pages are installed compressed, as Debian installs them.
    add_custom_command(OUTPUT ${page}.gz
      COMMAND ${AKVO_HELP2MAN} --no-info ${includes} --output=${page} $<TARGET_FILE:${tool}>
      COMMAND gzip -9nf ${page}
      DEPENDS ${depends}
      COMMENT "Generating the manual page of ${tool}"
      VERBATIM)
    list(APPEND akvo_tooldocs_outputs ${page}.gz)
    install(FILES ${page}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
  endforeach()
endif()

if(TARGET akvo-lipsync)
  set(completion ${CMAKE_BINARY_DIR}/bash-completion/akvo-lipsync)
  add_custom_command(OUTPUT ${completion}
    COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:akvo-lipsync> -DTEMPLATE=${akvo_tooldocs}/akvo-lipsync.bash.in
            -DOUTPUT=${completion} -P ${akvo_tooldocs}/Completion.cmake
    DEPENDS akvo-lipsync ${akvo_tooldocs}/akvo-lipsync.bash.in ${akvo_tooldocs}/Completion.cmake
            ${akvo_tooldocs}/ToolHelp.cmake
    COMMENT "Generating the bash completion of akvo-lipsync"
    VERBATIM)
  list(APPEND akvo_tooldocs_outputs ${completion})
  install(FILES ${completion} DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
endif()

add_custom_target(akvo_tool_docs ALL DEPENDS ${akvo_tooldocs_outputs})
