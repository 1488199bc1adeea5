# Run by cmake --install when all is in its place: writes down what was put there, for
# scripts/install.sh --uninstall. A line is the kind ("file" or "folder") and the path relative to
# the prefix; folders are those that were not there before, each behind the one that it is in. What an
# installation before this one put there stays in the list.
set(quillory_list "${quillory_root}/share/quillory/installed.txt")
set(lines)
if(EXISTS "${quillory_list}")
  file(STRINGS "${quillory_list}" lines)
endif()
foreach(folder IN LISTS quillory_new_folders)
  list(APPEND lines "folder ${folder}")
endforeach()
foreach(file IN LISTS CMAKE_INSTALL_MANIFEST_FILES)
  file(RELATIVE_PATH path "${CMAKE_INSTALL_PREFIX}" "${file}")
  list(APPEND lines "file ${path}")
endforeach()
list(REMOVE_DUPLICATES lines)
# The list itself goes last.
list(REMOVE_ITEM lines "file share/quillory/installed.txt")
list(APPEND lines "file share/quillory/installed.txt")
list(JOIN lines "\n" text)
file(WRITE "${quillory_list}" "${text}\n")
