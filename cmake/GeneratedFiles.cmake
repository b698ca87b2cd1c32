# Files made at build time by running a command (the tool's own manual page and completion
# scripts, compressed manual pages and changelogs) and installed like any other.
#
# kelvo_generated_file(<target> OUTPUT <file> DESTINATION <dir> COMPONENT <component>
#                      [RENAME <name>] [GZIP] COMMAND <command>... [DEPENDS <file or target>...])
# runs the command, writes its standard output to <file> (<file>.gz, and installs that,
# with GZIP) and builds it with the default target.
function(kelvo_generated_file target)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "GZIP" "OUTPUT;DESTINATION;COMPONENT;RENAME" "COMMAND;DEPENDS")
  set(output ${ARG_OUTPUT})
  set(gzip OFF)
  if(ARG_GZIP)
    set(output ${ARG_OUTPUT}.gz)
    set(gzip ON)
  endif()
  # "|" between the words: a list would not survive as one argument.
  string(REPLACE ";" "|" words "${ARG_COMMAND}")
  add_custom_command(OUTPUT ${output}
    COMMAND ${CMAKE_COMMAND} "-DCOMMAND=${words}" -DOUTPUT=${ARG_OUTPUT} -DGZIP=${gzip}
            -P ${PROJECT_SOURCE_DIR}/cmake/CaptureOutput.cmake
    DEPENDS ${ARG_DEPENDS} ${PROJECT_SOURCE_DIR}/cmake/CaptureOutput.cmake
    VERBATIM)
  add_custom_target(${target} ALL DEPENDS ${output})
  if(ARG_RENAME)
    install(FILES ${output} DESTINATION ${ARG_DESTINATION} RENAME ${ARG_RENAME} COMPONENT ${ARG_COMPONENT})
  else()
    install(FILES ${output} DESTINATION ${ARG_DESTINATION} COMPONENT ${ARG_COMPONENT})
  endif()
endfunction()

# A manual page of section 1, compressed, in share/man/man1.
function(kelvo_compressed_manual target output component)
  kelvo_generated_file(${target} OUTPUT ${output} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${component}
                       GZIP ${ARGN})
endfunction()
