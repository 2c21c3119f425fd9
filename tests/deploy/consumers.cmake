# cmake -DBUILD=<build tree> -DPREFIX=<dir> -DLIBDIR=<library dir under PREFIX>
#       -DPROJECT=<consumer project> -DEXAMPLE=<host program source> -DCC=<C compiler>
#       -DGENERATOR=<CMake generator> -DJAR=<SDK double jar> -P consumers.cmake
# Installs BUILD into a fresh PREFIX (without the SDK test double), puts the
# double where the vendor's jars go, builds the host program against PREFIX
# three ways (CMake package, pkg-config, plain cc) and runs each, then the
# installed doctor: between them they use every installed file.

# Runs a command, which must succeed and print something matching `expect`.
function(run expect)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE out ERROR_VARIABLE out COMMAND_ERROR_IS_FATAL ANY)
  if(NOT out MATCHES "${expect}")
    message(FATAL_ERROR "${ARGN}: no '${expect}' in\n${out}")
  endif()
endfunction()

set(work ${PREFIX}-work)
set(lib ${PREFIX}/${LIBDIR})
file(REMOVE_RECURSE ${PREFIX} ${work})
run("" ${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX})
file(GLOB_RECURSE jars ${PREFIX}/*.jar)
if(jars)
  message(FATAL_ERROR "the SDK test double was installed: ${jars}")
endif()
file(COPY ${JAR} DESTINATION ${lib})

set(ran "peach run finished")
run("" ${CMAKE_COMMAND} -S ${PROJECT} -B ${work}/cmake -G ${GENERATOR} -DCMAKE_PREFIX_PATH=${PREFIX}
  -DCMAKE_C_COMPILER=${CC} -DEXAMPLE=${EXAMPLE})
run("" ${CMAKE_COMMAND} --build ${work}/cmake)
run("${ran}" ${work}/cmake/consumer)

set(ENV{PKG_CONFIG_PATH} ${lib}/pkgconfig)
execute_process(COMMAND pkg-config --cflags --libs velmora OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE
  COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags UNIX_COMMAND "${flags}")
run("" ${CC} ${EXAMPLE} ${flags} -Wl,-rpath,${lib} -o ${work}/pkg-config)
run("${ran}" ${work}/pkg-config)
run("" ${CC} ${EXAMPLE} -I${PREFIX}/include -L${lib} -lvelmora -Wl,-rpath,${lib} -o ${work}/cc)
run("${ran}" ${work}/cc)

run("library directory +${lib}\n.*test double.*Result: ready" ${PREFIX}/bin/velmora-doctor)
