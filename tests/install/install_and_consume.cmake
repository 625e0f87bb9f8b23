# Run by the install test: installs the matcher component, configures and builds the consumer with
# nothing but the installed prefix, and runs its two programs.
set(prefix ${WORK_FOLDER}/prefix)
set(consumer_build ${WORK_FOLDER}/build)
file(REMOVE_RECURSE ${WORK_FOLDER})

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    list(JOIN ARGV " " command)
    message(FATAL_ERROR "exit status ${status}: ${command}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD_FOLDER} --prefix ${prefix} --component matcher)
run(${CMAKE_COMMAND} -S ${CONSUMER} -B ${consumer_build} -G ${GENERATOR}
  -DCMAKE_PREFIX_PATH=${prefix}
  -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_CXX_COMPILER=${CXX_COMPILER})
run(${CMAKE_COMMAND} --build ${consumer_build})
run(${consumer_build}/consumer_c)
run(${consumer_build}/consumer_cxx)
