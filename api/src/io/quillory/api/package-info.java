/**
 * What an application that Quillory starts can ask and say: how it was started, whether there is an
 * update, and that it is well. Nothing here depends on anything but Java 8, and outside of the
 * launcher, in an IDE say, every call is answered and does nothing.
 */
package io.quillory.api;
