# cmake --install: quillory-pack, what it packs, and what a system wants to have of a command: manual
# pages, completion, documents. scripts/install.sh --uninstall takes it all away again.
#
# quillory-pack finds what it packs from where it lies itself (packager/content/bundle_tools.cpp), so
# that an installation can be moved; bin and share/quillory therefore have these names everywhere.
include(GNUInstallDirs)
set(share share/quillory)
set(man ${CMAKE_INSTALL_MANDIR}/man1)
set(doc ${CMAKE_INSTALL_DOCDIR})
set(bash ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
set(zsh ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
set(fish ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

# The texts that programs print, made by the build: quillory_printed(FILE PROGRAM ARGUMENTS...).
set(texts ${CMAKE_BINARY_DIR}/texts)
file(MAKE_DIRECTORY ${texts})
set(printed)
function(quillory_printed file program)
  add_custom_command(OUTPUT ${texts}/${file}
                     COMMAND ${program} ${ARGN} > ${texts}/${file}
                     DEPENDS ${program}
                     VERBATIM)
  list(APPEND printed ${texts}/${file})
  set(printed ${printed} PARENT_SCOPE)
endfunction()
quillory_printed(quillory-pack.1 quillory-pack manual)
quillory_printed(lzma64.1 lzma64_manual)
quillory_printed(quillory-update.1 quillory_update_manual)
quillory_printed(quillory-pack.bash quillory-pack completion bash)
quillory_printed(_quillory-pack quillory-pack completion zsh)
quillory_printed(quillory-pack.fish quillory-pack completion fish)
add_custom_target(texts ALL DEPENDS ${printed})

# Before anything is put there: which folders are not yet.
set(folders bin ${share}/macos ${share}/class-lists ${man} ${doc}/docs/formats ${doc}/docs/images ${bash} ${zsh} ${fish})
install(CODE "set(quillory_folders \"${folders}\")")
install(SCRIPT ${CMAKE_CURRENT_LIST_DIR}/note_new_folders.cmake)

install(TARGETS quillory-pack lzma64 RUNTIME DESTINATION bin)
# Not to be started from here: they are copied into bundles.
install(TARGETS launcher elev_mac quillory-update quillory-update-window RUNTIME
        DESTINATION ${share})
get_target_property(updater_jar updater_jar JAR_FILE)
install(FILES ${updater_jar} DESTINATION ${share})
install(FILES ${quillory_class_lists} DESTINATION ${share}/class-lists)
# For who writes an application: on its class path, beside it in an IDE.
install(FILES ${quillory_api_jars} DESTINATION ${share})
# Programs for Macs, where scripts/build-macos.sh has made them beside this build.
foreach(program launcher lzma64 elev_mac quillory-update quillory-update-window)
  if(NOT APPLE)
    install(PROGRAMS ${CMAKE_BINARY_DIR}/../macos/bin/${program} DESTINATION ${share}/macos OPTIONAL)
  endif()
endforeach()

install(FILES ${texts}/quillory-pack.1 ${texts}/lzma64.1 ${texts}/quillory-update.1 DESTINATION ${man})
install(FILES ${texts}/quillory-pack.bash DESTINATION ${bash} RENAME quillory-pack)
install(FILES ${texts}/_quillory-pack DESTINATION ${zsh})
install(FILES ${texts}/quillory-pack.fish DESTINATION ${fish})
install(FILES README.md CONTRIBUTING.md SECURITY.md DESTINATION ${doc})
install(DIRECTORY docs DESTINATION ${doc})

install(SCRIPT ${CMAKE_CURRENT_LIST_DIR}/list_installed.cmake)
