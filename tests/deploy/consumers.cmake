# cmake -DSTEP=<install|cmake|pkg-config|cc> -DBUILD=<build tree> -DPREFIX=<dir>
#       -DLIBDIR=<library dir under PREFIX> -DSOURCE=<consumer dir> -DCC=<C compiler>
#       -DGENERATOR=<CMake generator> -DJAR=<SDK double jar> -P consumers.cmake
# install: installs BUILD into a fresh PREFIX, checks the layout, then puts the
# SDK double where the vendor's jars go. The other steps build the consumer
# against PREFIX one way each and run it.
function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

set(work ${PREFIX}-${STEP})
if(STEP STREQUAL "install")
  file(REMOVE_RECURSE ${PREFIX})
  run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX})
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
  file(COPY ${JAR} DESTINATION ${PREFIX}/${LIBDIR})
elseif(STEP STREQUAL "cmake")
  file(REMOVE_RECURSE ${work})
  run(${CMAKE_COMMAND} -S ${SOURCE} -B ${work} -G ${GENERATOR} -DCMAKE_PREFIX_PATH=${PREFIX}
    -DCMAKE_C_COMPILER=${CC})
  run(${CMAKE_COMMAND} --build ${work})
  run(${work}/consumer)
else()
  file(MAKE_DIRECTORY ${work})
  if(STEP STREQUAL "pkg-config")
    set(ENV{PKG_CONFIG_PATH} ${PREFIX}/${LIBDIR}/pkgconfig)
    execute_process(COMMAND pkg-config --cflags --libs velmora OUTPUT_VARIABLE flags
      OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND pkg-config --variable=libdir velmora OUTPUT_VARIABLE libdir
      OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(flags UNIX_COMMAND "${flags}")
  else()
    set(libdir ${PREFIX}/${LIBDIR})
    set(flags -I${PREFIX}/include -L${libdir} -lvelmora)
  endif()
  run(${CC} ${SOURCE}/consumer.c ${flags} -Wl,-rpath,${libdir} -o ${work}/consumer)
  run(${work}/consumer)
endif()
