#pragma once

/// Stands, as long as it lives, for the one file operation that the user is asked about or that runs. What an
/// operation works on are globals, so that no second one may be prepared meanwhile. Dialogs keep the user's
/// keys and clicks from the panels, but not everything: a drop is none of these. GUI thread only.
class OneOperation
{
public:
    OneOperation() { count() += 1; }
    ~OneOperation() { count() -= 1; }
    OneOperation(const OneOperation&) = delete;
    OneOperation& operator=(const OneOperation&) = delete;

    /// @return whether there is one
    static bool stands() { return count() > 0; }

private:
    static int& count()
    {
        static int operations = 0;
        return operations;
    }
};
