#ifndef TESSEL_GRAFLIB_CFILTERBILINEARFLOAT_H
#define TESSEL_GRAFLIB_CFILTERBILINEARFLOAT_H

/// A separable box filter in floating point. The horizontal stage adds up each source row under
/// every destination column. The vertical stage adds up these sums under every destination row and
/// divides by the footprint's area. A partly covered sample counts by the part that is covered.
/// Positions are running sums of type F. Results are cut, not rounded, so that flat areas may come
/// out one step darker.
///
/// The filter works on any array of interleaved samples (component 0, 1, ... of pixel 0, then of
/// pixel 1, ...) and knows nothing of images. T is the sample type, F the type that it computes in.
/// It exists for T = unsigned char and T = short, both with F = float. All compilers that keep to
/// IEEE single precision give the same bits. One object is used by one thread at a time. The source
/// stays with the caller and is only read.
template <typename T, typename F>
class CFilterBilinearFloat
{
public:
    /// Resizes `source` and returns the result, `dstWidth * dstHeight * components` samples. Their
    /// array is new, has a little more room than that, and belongs to the caller (`delete[]`).
    ///
    /// `srcLineWidth` is the distance from one source row to the next, in pixels. `progress` is
    /// called before each of the two stages of every component; it may be null. Returns null when a
    /// side or `components` is below 1. When memory runs out, it writes a line beginning "***** "
    /// for each array that has no room, and returns null.
    T* DownScale(T* source, int srcWidth, int srcHeight, int dstWidth, int dstHeight,
                 int components, int srcLineWidth, void (*progress)());

    /// The horizontal stage for one component. Fills mResultVectorX with mSrcHeight rows of
    /// mDstWidth sums; the weights of each sum add up to mScaleX.
    void BilinearStageX(int component);
    /// The vertical stage for the same component. Takes the sums from mResultVectorX and fills
    /// mResultVectorY.
    void BilinearStageY(int component);

    // DownScale fills in these fields before it runs the stages. A program that calls a stage by
    // itself fills them in, too: mResultVectorX needs room for mSrcHeight + 1 rows of mDstWidth
    // sums.
    int mSrcWidth = 0;              ///< pixels
    int mSrcHeight = 0;             ///< rows
    int mSrcLineWidth = 0;          ///< pixels from one source row to the next
    int mDstWidth = 0;              ///< pixels
    int mDstHeight = 0;             ///< rows
    int mComponents = 0;            ///< samples per pixel
    F mScaleX = 0;                  ///< source pixels per destination pixel
    F mScaleY = 0;                  ///< source rows per destination row
    F* mResultVectorX = nullptr;    ///< one component's sums; null outside DownScale
    T* mResultVectorY = nullptr;    ///< the result; null outside DownScale
    T* mSource = nullptr;           ///< the source's samples, only read
    void (*mProgress)() = nullptr;  ///< called before each stage; may be null

private:
    F RowSum(const T* samples, F start, F end) const;
    void AddRows(F* sums, F start, F end) const;
    void RunStages();
};

extern template class CFilterBilinearFloat<unsigned char, float>;
extern template class CFilterBilinearFloat<short, float>;

#endif
