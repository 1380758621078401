# Writes the commit that is being built into the header OUTPUT, which keeps its date while the commit stays the same.
# In an exported tree git has put the commit into cmake/commit.txt; QUILLON_COMMIT in the environment overrules both.
cmake_minimum_required(VERSION 3.25)
set(commit "$ENV{QUILLON_COMMIT}")
if(commit STREQUAL "")
  file(READ "${SOURCE}/cmake/commit.txt" exported)
  string(STRIP "${exported}" exported)
  if(exported MATCHES "^[0-9a-f]+$")
    # As many digits as git names below.
    string(SUBSTRING "${exported}" 0 12 commit)
  elseif(EXISTS "${SOURCE}/.git")
    # The history may belong to somebody else, as in a container.
    execute_process(
      COMMAND git -c safe.directory=* -C "${SOURCE}" describe --always --abbrev=12 --dirty=+ --exclude=*
      OUTPUT_VARIABLE commit OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  endif()
endif()
file(CONFIGURE OUTPUT "${OUTPUT}"
  CONTENT "#include <string_view>\ninline constexpr std::u16string_view BuildCommit = u\"@commit@\";\n" @ONLY)
