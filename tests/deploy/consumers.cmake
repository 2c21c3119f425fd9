# cmake -DBUILD=<build tree> -DPREFIX=<dir> -DLIBDIR=<library dir under PREFIX>
#       -DPROJECT=<consumer project> -DEXAMPLE=<host program source> -DCC=<C compiler>
#       -DGENERATOR=<CMake generator> -DJAR=<SDK double jar> -P consumers.cmake
# Installs BUILD into a fresh PREFIX and checks the layout, puts the SDK double
# where the vendor's jars go, builds the host program against PREFIX three ways
# (CMake package, pkg-config, plain cc) and runs each, then the installed doctor.

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
foreach(file include/velmora.h include/velmora_version.h ${LIBDIR}/libvelmora.so ${LIBDIR}/libvelmora.so.1
    bin/velmora-doctor ${LIBDIR}/cmake/velmora/velmoraConfig.cmake
    ${LIBDIR}/cmake/velmora/velmoraConfigVersion.cmake ${LIBDIR}/pkgconfig/velmora.pc)
  if(NOT EXISTS ${PREFIX}/${file})
    message(FATAL_ERROR "not installed: ${file}")
  endif()
endforeach()
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
execute_process(COMMAND pkg-config --variable=libdir velmora OUTPUT_VARIABLE libdir OUTPUT_STRIP_TRAILING_WHITESPACE
  COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags UNIX_COMMAND "${flags}")
run("" ${CC} ${EXAMPLE} ${flags} -Wl,-rpath,${libdir} -o ${work}/pkg-config)
run("${ran}" ${work}/pkg-config)
run("" ${CC} ${EXAMPLE} -I${PREFIX}/include -L${lib} -lvelmora -Wl,-rpath,${lib} -o ${work}/cc)
run("${ran}" ${work}/cc)

run("library directory +${lib}\n.*test double.*Result: ready" ${PREFIX}/bin/velmora-doctor)
