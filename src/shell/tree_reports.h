// What an interface is told about a tree search.
#pragma once

// Connects the tree search to these reports and makes it a mode of the search.
void installTreeReports();
