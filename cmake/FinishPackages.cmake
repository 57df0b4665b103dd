# What Debian wants done to files that are installed as they are elsewhere: manual pages and
# changelogs compressed, archives without what nobody links.
set(folder ${CPACK_TEMPORARY_INSTALL_DIRECTORY})
file(GLOB_RECURSE papers ${folder}/*.1 ${folder}/changelog ${folder}/NEWS)
if(papers)
  execute_process(COMMAND gzip -9n ${papers} COMMAND_ERROR_IS_FATAL ANY)
endif()
file(GLOB_RECURSE archives ${folder}/*.a)
if(archives)
  execute_process(COMMAND_ERROR_IS_FATAL ANY
    COMMAND strip --strip-unneeded --remove-section=.comment --remove-section=.note ${archives})
endif()
