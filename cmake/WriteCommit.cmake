# Writes the commit of the sources into a header: cmake -DSOURCE=… -DOUTPUT=… -P WriteCommit.cmake
# "unknown" where the sources lie in no clone of their own. The file changes only when its content does.
get_filename_component(above ${SOURCE} DIRECTORY)
set(ENV{GIT_CEILING_DIRECTORIES} ${above})
set(commit unknown)
execute_process(COMMAND git describe --always --dirty --abbrev=12 --exclude=* WORKING_DIRECTORY ${SOURCE}
                OUTPUT_VARIABLE answer RESULT_VARIABLE failed ERROR_QUIET OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT failed)
  set(commit ${answer})
endif()
file(CONFIGURE OUTPUT ${OUTPUT} CONTENT "#define TARN_COMMIT \"@commit@\"\n" @ONLY)
