# Writes OUTPUT: from which commit the program is built that is in SOURCES, as a literal of C++, " (commit 0123456789ab)".
# It is "" where nobody knows. Run with each build, it leaves the file alone unless the commit is another one.
file(STRINGS ${SOURCES}/cmake/commit.txt commit LIMIT_COUNT 1)
set(changed "")
# In an archive of the sources, git has written the commit there. Otherwise it is asked; not of a folder around this one.
if(commit MATCHES "Format")
  set(commit "")
  execute_process(COMMAND git -C ${SOURCES} rev-parse --show-prefix HEAD OUTPUT_VARIABLE answer ERROR_QUIET)
  if(answer MATCHES "^\n([0-9a-f]+)\n$")
    set(commit ${CMAKE_MATCH_1})
    execute_process(COMMAND git -C ${SOURCES} --no-optional-locks status --porcelain --untracked-files=no
      OUTPUT_VARIABLE changes ERROR_QUIET)
    if(changes)
      set(changed ", changed")
    endif()
  endif()
endif()
set(literal "\"\"")
if(commit)
  string(SUBSTRING ${commit} 0 12 commit)
  set(literal "\" (commit ${commit}${changed})\"")
endif()
file(CONFIGURE OUTPUT ${OUTPUT} CONTENT "${literal}\n" @ONLY)
