#pragma once

/// The way of pictures through the output profile.
class CMSBitmapProvider {
public:
    /// From now on the providers of the process bring the pictures that they read to the output
    /// profile, whichever is in force when a picture is locked; those that they have read before
    /// are read anew. Without an output profile pictures stay as they are.
    static void install();
};
