# Fails unless the README holds the example program to the letter.
#     cmake -DREADME=... -DEXAMPLE=... -P check_readme.cmake
file(READ ${README} readme)
file(READ ${EXAMPLE} example)
string(FIND "${readme}" "```cpp\n${example}```\n" found)
if(found EQUAL -1)
  message(FATAL_ERROR "${README} does not show ${EXAMPLE} as it is")
endif()
