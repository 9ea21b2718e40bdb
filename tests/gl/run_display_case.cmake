# Runs a display script case with the engine's stock data pack (DATA) beside it: the case is
# staged with its .files folder and the pack added, then RUNNER runs it as any script case. A
# DRIVER library, if given, is kept loaded in the engine for the whole run.
get_filename_component(name ${CASE} NAME_WE)
get_filename_component(dir ${CASE} DIRECTORY)
set(staged ${WORK}.case)
file(REMOVE_RECURSE ${staged})
file(MAKE_DIRECTORY ${staged}/${name}.files)
if(EXISTS ${dir}/${name}.files)
  file(COPY ${dir}/${name}.files/ DESTINATION ${staged}/${name}.files)
endif()
file(COPY ${DATA} DESTINATION ${staged}/${name}.files)
file(COPY ${CASE} ${dir}/${name}.out DESTINATION ${staged})
set(CASE ${staged}/${name}.script)
if(DRIVER)
  set(ENV{LD_PRELOAD} ${DRIVER})
endif()
include(${RUNNER})
