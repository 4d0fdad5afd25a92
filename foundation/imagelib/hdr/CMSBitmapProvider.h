#pragma once

/// The way of pictures through the output profile.
class CMSBitmapProvider {
public:
    /// From now on the providers of the process pass the pictures that they read through the
    /// output profile. Without a profile pictures stay as they are.
    static void install();
};
