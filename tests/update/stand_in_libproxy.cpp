// In the place of libproxy: answers with the words of the variable STAND_IN_PROXIES. The word
// "left" becomes a proxy named after the seconds that this process still has, and "late" is where
// they end.
#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

extern "C" {

void* px_proxy_factory_new() { return std::getenv("STAND_IN_PROXIES"); }

char** px_proxy_factory_get_proxies(void* factory, const char* url) {
  std::istringstream words(static_cast<const char*>(factory));
  std::vector<std::string> answers;
  for (std::string word; words >> word;) {
    if (word == "late") raise(SIGALRM);
    if (word == "left") word = "http://left-" + std::to_string(alarm(0));
    if (word == "url") word = "http://asked-for-" + std::string(url).substr(std::strlen("http://"));
    answers.push_back(word);
  }
  auto** const list = static_cast<char**>(std::calloc(answers.size() + 1, sizeof(char*)));
  for (std::size_t i = 0; i < answers.size(); ++i) list[i] = strdup(answers[i].c_str());
  return list;
}

}  // extern "C"
