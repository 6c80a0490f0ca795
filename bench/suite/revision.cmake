# Writes OUT, the source behind revision.h, from the revision of ROOT, when it has changed.
cmake_minimum_required(VERSION 3.25)
execute_process(COMMAND git -C "${ROOT}" rev-parse --short HEAD
  OUTPUT_VARIABLE revision OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE failed)
if(failed)
  set(revision unknown)
else()
  execute_process(COMMAND git -C "${ROOT}" status --porcelain --untracked-files=no OUTPUT_VARIABLE changes ERROR_QUIET)
  if(changes)
    string(APPEND revision " and uncommitted changes")
  endif()
endif()
file(CONFIGURE OUTPUT "${OUT}" @ONLY
  CONTENT "#include \"bench/suite/revision.h\"\n\nconst char* const q7z::bench::kRevision = \"@revision@\";\n")
