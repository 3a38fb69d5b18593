// The word that was probably meant.
#ifndef CLUSCTL_SUGGESTION_H
#define CLUSCTL_SUGGESTION_H

#include <string>
#include <vector>

// "; did you mean "resources"?", to be put behind the sentence that refuses a word; empty when no candidate is near.
// Letter case does not count. Of several that are equally near the first is named.
std::string DidYouMean(const std::string& word, const std::vector<std::string>& candidates);

#endif
